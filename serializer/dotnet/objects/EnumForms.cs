// SPDX-License-Identifier: MIT
using System;
using System.Collections.Generic;
using System.Linq.Expressions;
using System.Reflection;

namespace Velmar.Q7R.Serializer.Objects
{
    // By number, as the type beneath.
    internal sealed class EnumForm<E, U> : Form<E> where E : struct
    {
        private static readonly Func<E, U> s_number = Conversion<E, U>();
        private static readonly Func<U, E> s_value = Conversion<U, E>();

        private readonly Form<U> m_form = (Form<U>)Forms.Known(typeof(U));

        internal override void WriteNode(ItemsOut items, Place place, E value)
        {
            m_form.WriteNode(items, place, s_number(value));
        }
        internal override E ReadNode(ItemsIn items, int node, Place place, E current)
        {
            return s_value(m_form.ReadNode(items, node, place, default(U)));
        }
        internal override bool IsEmpty(E value) { return m_form.IsEmpty(s_number(value)); }

        internal override bool FitsAttribute { get { return true; } }
        internal override void WriteAttribute(ItemsOut items, Place place, E value)
        {
            m_form.WriteAttribute(items, place, s_number(value));
        }
        internal override bool ReadAttribute(AttributeText attribute, out E value)
        {
            U number;
            bool good = m_form.ReadAttribute(attribute, out number);
            value = s_value(number);
            return good;
        }

        // Neither boxes nor copies.
        private static Func<A, B> Conversion<A, B>()
        {
            ParameterExpression from = Expression.Parameter(typeof(A), "value");
            return Expression.Lambda<Func<A, B>>(Expression.Convert(from, typeof(B)), from).Compile();
        }
    }

    internal sealed class NamedEnumForm<E> : Form<E> where E : struct
    {
        private static readonly Dictionary<E, string> s_names = new Dictionary<E, string>();
        private static readonly Dictionary<string, E> s_values = new Dictionary<string, E>(StringComparer.Ordinal);
        private static readonly string s_all;

        static NamedEnumForm()
        {
            var all = new List<string>();
            foreach (FieldInfo field in typeof(E).GetFields(BindingFlags.Public | BindingFlags.Static))
            {
                var told = (FieldAttribute)Attribute.GetCustomAttribute(field, typeof(FieldAttribute));
                string name = told != null && told.Name != null ? told.Name : field.Name;
                var value = (E)field.GetValue(null);
                // Of names for one value, the first is written.
                if (!s_names.ContainsKey(value)) s_names.Add(value, name);
                if (!s_values.ContainsKey(name)) s_values.Add(name, value);
                all.Add(name);
            }
            s_all = "one of " + string.Join(", ", all.ToArray());
        }

        internal override void WriteNode(ItemsOut items, Place place, E value)
        {
            items.Text(place, NameOf(items, place, value));
        }
        internal override E ReadNode(ItemsIn items, int node, Place place, E current)
        {
            E value;
            if (!s_values.TryGetValue(items.Text(node), out value)) items.FailFound(node, s_all);
            return value;
        }
        internal override bool IsEmpty(E value) { return value.Equals(default(E)); }

        internal override bool FitsAttribute { get { return true; } }
        internal override void WriteAttribute(ItemsOut items, Place place, E value)
        {
            items.Attribute(place, NameOf(items, place, value));
        }
        internal override bool ReadAttribute(AttributeText attribute, out E value)
        {
            return s_values.TryGetValue(attribute.Text, out value);
        }

        private static string NameOf(ItemsOut items, Place place, E value)
        {
            string name;
            if (!s_names.TryGetValue(value, out name)) items.FailAt(place, "a value without a name");
            return name;
        }
    }
}
