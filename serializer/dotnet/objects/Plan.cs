// SPDX-License-Identifier: MIT
using System;
using System.Collections.Generic;
using System.Reflection;

namespace Velmar.Q7R.Serializer.Objects
{
    // The fields of one type, made when it is first met. They stand in the order of their names,
    // which is that of documents.
    internal sealed class Plan<T>
    {
        private static volatile Plan<T> s_plan;

        private readonly Member<T>[] m_members;
        private readonly Dictionary<string, int> m_names = new Dictionary<string, int>(StringComparer.Ordinal);
        private readonly Dictionary<string, int> m_former;  // null where no member has one
        private readonly int m_version;
        private readonly Func<T> m_make;

        // Threads that come at the same time make equal ones.
        internal static Plan<T> Get()
        {
            return s_plan ?? (s_plan = new Plan<T>());
        }

        private Plan()
        {
            var told = (FieldsAttribute)Attribute.GetCustomAttribute(typeof(T), typeof(FieldsAttribute));
            var members = new List<Member<T>>();
            foreach (PropertyInfo property in Describing.PropertiesOf(typeof(T)))
                members.Add(Member<T>.Of(property, told != null ? told.Style : NameStyle.AsWritten));
            if (members.Count == 0 && told == null) throw Describing.Wrong(typeof(T), "a type without fields");
            m_version = told != null ? told.Version : 0;
            if (m_version != 0) members.Add(new VersionMember<T>(m_version));
            members.Sort((a, b) => a.Place.CompareTo(b.Place));
            m_members = members.ToArray();
            for (int i = 0; i < m_members.Length; ++i)
            {
                string name = m_members[i].Place.Name;
                if (name.IndexOf('\0') >= 0) throw Describing.Wrong(typeof(T), "a field has no name");
                if (m_names.ContainsKey(name))
                    throw Describing.Wrong(typeof(T), "two fields have the name \"" + name + "\"");
                m_names.Add(name, i);
                if (m_members[i].Was == null) continue;
                m_former = m_former ?? new Dictionary<string, int>(StringComparer.Ordinal);
                m_former[m_members[i].Was] = i;
            }
            m_make = Describing.Maker<T>();
        }

        internal T Make() { return m_make(); }

        internal void Write(ItemsOut items, ref T value)
        {
            foreach (Member<T> member in m_members) member.Write(items, ref value);
        }

        internal void Read(ItemsIn items, int node, ref T value)
        {
            int count = m_members.Length;
            int first = items.OpenStarts(m_former != null ? 2 * count : count);
            int end = items.Behind(node);
            if (items.TypeOf(node) == Code.Tree) FindStarts(items, node, end, first);
            int version = 0;
            for (int i = 0; i < count; ++i)
            {
                int start = items.StartAt(first + i);
                if (start == 0 && m_former != null) start = items.StartAt(first + count + i);
                if (start != 0) items.Take(start);
                m_members[i].Read(items, node, start, end, ref value, ref version);
            }
            items.CloseStarts(first);
            var told = value as IAfterReading;
            if (told != null)
            {
                told.AfterReading(version);
                value = (T)told;
            }
        }

        // Where the nodes of each name begin. Those of a name stand together, and for the most part
        // the next name is that of the next member.
        private void FindStarts(ItemsIn items, int node, int end, int first)
        {
            int number = -1, next = 0;
            for (int at = items.ValueOf(node); at < end; at = items.Behind(at))
            {
                if (items.NumberOfName(at) == number) continue;
                number = items.NumberOfName(at);
                string name = items.NameOf(at);
                if (m_former != null)
                {
                    int former;
                    if (m_former.TryGetValue(name, out former))
                        items.SetStart(first + m_members.Length + former, at);
                }
                int i = next;
                if (i >= m_members.Length || m_members[i].Place.Name != name)
                {
                    if (!m_names.TryGetValue(name, out i)) continue;
                }
                items.SetStart(first + i, at);
                next = i + 1;
            }
        }
    }
}
