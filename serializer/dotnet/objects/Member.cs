// SPDX-License-Identifier: MIT
using System;
using System.Reflection;

namespace Velmar.Q7R.Serializer.Objects
{
    // One field of a type.
    internal abstract class Member<T>
    {
        internal Place Place;
        internal string Was;

        internal abstract void Write(ItemsOut items, ref T value);
        // start: the first of its nodes, 0 for none.
        internal abstract void Read(ItemsIn items, int node, int start, int end, ref T value,
                                    ref int version);

        internal static Member<T> Of(PropertyInfo property, NameStyle style)
        {
            Type member = typeof(T).IsValueType ? typeof(StructMember<,>) : typeof(ClassMember<,>);
            var made = (Member<T>)Describing.Make(member, new[] { typeof(T), property.PropertyType }, property);
            var told = Describing.Told<FieldAttribute>(property);
            string name = told != null && told.Name != null ? told.Name : Describing.Styled(property.Name, style);
            made.Place = new Place(name, Describing.WithinOf(property));
            made.Was = told != null ? told.Was : null;
            return made;
        }
    }

    internal abstract class PropertyMember<T, P> : Member<T>
    {
        private readonly bool m_omitEmpty, m_attribute;
        private readonly bool m_keepsParts, m_canBeNothing;
        private readonly Form<P> m_form;

        protected PropertyMember(PropertyInfo property)
        {
            m_omitEmpty = Describing.Told<OmitEmptyAttribute>(property) != null;
            m_attribute = Describing.Told<NodeAttributeAttribute>(property) != null;
            m_form = Forms.Of<P>(property);
            m_keepsParts = m_form.KeepsParts;
            m_canBeNothing = m_form.CanBeNothing;
            if (m_attribute && !m_form.FitsAttribute)
                throw Describing.Wrong(property,
                    "an attribute is a text, a number, a truth value or an enumeration");
        }

        protected abstract P Get(ref T value);
        protected abstract void Set(ref T value, P part);

        internal override void Write(ItemsOut items, ref T value)
        {
            P part = Get(ref value);
            if (m_omitEmpty && m_form.IsEmpty(part)) return;
            if (m_attribute) m_form.WriteAttribute(items, Place, part);
            else m_form.WriteField(items, Place, part);
        }

        internal override void Read(ItemsIn items, int node, int start, int end, ref T value,
                                    ref int version)
        {
            if (m_attribute)
            {
                ReadAttribute(items, node, ref value);
                return;
            }
            if (start == 0)
            {
                if (m_omitEmpty) Set(ref value, m_form.Empty(CurrentOf(ref value)));
                else if (m_canBeNothing) Set(ref value, m_form.Nothing(CurrentOf(ref value)));
                return;
            }
            P current = m_keepsParts && !m_omitEmpty ? Get(ref value) : default(P);
            Set(ref value, m_form.ReadField(items, start, end, Place, current));
        }

        private P CurrentOf(ref T value) { return m_keepsParts ? Get(ref value) : default(P); }

        private void ReadAttribute(ItemsIn items, int node, ref T value)
        {
            AttributeText attribute;
            P part;
            if (!items.GetAttribute(node, Place.Name, out attribute))
            {
                // A text that is empty is not stored.
                if (m_omitEmpty || m_canBeNothing) Set(ref value, m_form.Empty(default(P)));
            }
            else if (m_form.ReadAttribute(attribute, out part))
            {
                Set(ref value, part);
            }
            else
            {
                items.Fail(node, "attribute \"" + Place.Name + "\" has the value \"" + attribute.Text +
                                     "\", which does not fit");
            }
        }
    }

    internal sealed class ClassMember<T, P> : PropertyMember<T, P> where T : class
    {
        private readonly Func<T, P> m_get;
        private readonly Action<T, P> m_set;

        internal ClassMember(PropertyInfo property) : base(property)
        {
            m_get = (Func<T, P>)Delegate.CreateDelegate(typeof(Func<T, P>), property.GetGetMethod());
            m_set = (Action<T, P>)Delegate.CreateDelegate(typeof(Action<T, P>), property.GetSetMethod());
        }

        protected override P Get(ref T value) { return m_get(value); }
        protected override void Set(ref T value, P part) { m_set(value, part); }
    }

    internal sealed class StructMember<T, P> : PropertyMember<T, P> where T : struct
    {
        private delegate P Getter(ref T value);
        private delegate void Setter(ref T value, P part);

        private readonly Getter m_get;
        private readonly Setter m_set;

        internal StructMember(PropertyInfo property) : base(property)
        {
            m_get = (Getter)Delegate.CreateDelegate(typeof(Getter), property.GetGetMethod());
            m_set = (Setter)Delegate.CreateDelegate(typeof(Setter), property.GetSetMethod());
        }

        protected override P Get(ref T value) { return m_get(ref value); }
        protected override void Set(ref T value, P part) { m_set(ref value, part); }
    }

    // The version of a type, among its fields.
    internal sealed class VersionMember<T> : Member<T>
    {
        private readonly int m_version;

        internal VersionMember(int version)
        {
            m_version = version;
            Place = new Place("version", Within.Usual);
        }

        internal override void Write(ItemsOut items, ref T value) { items.Int(Place, m_version); }
        internal override void Read(ItemsIn items, int node, int start, int end, ref T value,
                                    ref int version)
        {
            if (start != 0) version = (int)items.Whole(start, int.MinValue, int.MaxValue);
        }
    }
}
