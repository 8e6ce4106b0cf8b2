// SPDX-License-Identifier: MIT
using System;

namespace Velmar.Q7R.Serializer.Objects
{
    // A form with nodes in its node, which may be that of a root.
    internal interface IContent<T>
    {
        void WriteContent(ItemsOut items, T value);
        void ReadContent(ItemsIn items, int node, ref T value);
    }

    // What may not be there: no node as a field, null="true" as an element.
    internal abstract class ReferenceForm<T> : Form<T> where T : class
    {
        protected abstract void WriteThere(ItemsOut items, Place place, T value);
        protected abstract T ReadThere(ItemsIn items, int node);

        internal override void WriteNode(ItemsOut items, Place place, T value)
        {
            if (value == null) items.Null(place);
            else WriteThere(items, place, value);
        }
        internal override void WriteField(ItemsOut items, Place place, T value)
        {
            if (value != null) WriteThere(items, place, value);
        }
        internal override T ReadNode(ItemsIn items, int node, Place place, T current)
        {
            return items.IsNull(node) ? null : ReadThere(items, node);
        }
        internal override bool CanBeNothing { get { return true; } }
        internal override bool IsEmpty(T value) { return value == null; }
    }

    internal sealed class ClassForm<T> : ReferenceForm<T>, IContent<T> where T : class
    {
        protected override void WriteThere(ItemsOut items, Place place, T value)
        {
            items.Open(place);
            WriteContent(items, value);
            items.Close();
        }
        protected override T ReadThere(ItemsIn items, int node)
        {
            T value = Plan<T>.Get().Make();
            items.Enter(node);
            ReadContent(items, node, ref value);
            items.Leave(node);
            return value;
        }

        public void WriteContent(ItemsOut items, T value)
        {
            if (value.GetType() != typeof(T)) items.Fail("a type that is not among the kinds of its base");
            Plan<T>.Get().Write(items, ref value);
        }
        public void ReadContent(ItemsIn items, int node, ref T value)
        {
            Plan<T>.Get().Read(items, node, ref value);
        }
    }

    internal sealed class StructForm<T> : Form<T>, IContent<T> where T : struct
    {
        internal override void WriteNode(ItemsOut items, Place place, T value)
        {
            items.Open(place);
            Plan<T>.Get().Write(items, ref value);
            items.Close();
        }
        internal override T ReadNode(ItemsIn items, int node, Place place, T current)
        {
            items.Enter(node);
            Plan<T>.Get().Read(items, node, ref current);
            items.Leave(node);
            return current;
        }
        internal override bool KeepsParts { get { return true; } }
        internal override bool IsEmpty(T value) { return value.Equals(default(T)); }

        public void WriteContent(ItemsOut items, T value) { Plan<T>.Get().Write(items, ref value); }
        public void ReadContent(ItemsIn items, int node, ref T value)
        {
            Plan<T>.Get().Read(items, node, ref value);
        }
    }

    // A subnode that the object fills itself.
    internal sealed class HostForm<T> : ReferenceForm<T> where T : class, ISerialisable
    {
        private readonly Func<T> m_make;

        internal HostForm(Func<T> make) { m_make = make; }

        protected override void WriteThere(ItemsOut items, Place place, T value) { items.Host(place, value); }
        protected override T ReadThere(ItemsIn items, int node)
        {
            T value = m_make();
            using (Node host = items.HostAt(node)) value.ReadValues(host);
            return value;
        }
    }

    // A node with one node, which the type of what is in it names.
    internal sealed class KindForm<T> : ReferenceForm<T>, IContent<T> where T : class
    {
        internal abstract class Kind
        {
            internal readonly Place Place;
            internal readonly Type Type;

            protected Kind(string name, Type type)
            {
                Place = new Place(name, Within.Usual);
                Type = type;
            }

            internal abstract void Write(ItemsOut items, T value);
            internal abstract T Read(ItemsIn items, int node);
        }

        internal sealed class KindOf<K> : Kind where K : class, T
        {
            private readonly Form<K> m_form;

            internal KindOf(string name, Form<K> form) : base(name ?? typeof(K).Name, typeof(K))
            {
                m_form = form;
            }
            internal override void Write(ItemsOut items, T value) { m_form.WriteNode(items, Place, (K)value); }
            internal override T Read(ItemsIn items, int node)
            {
                return m_form.ReadNode(items, node, Place, null);
            }
        }

        private readonly Kind[] m_kinds;

        internal KindForm(Kind[] kinds) { m_kinds = kinds; }

        protected override void WriteThere(ItemsOut items, Place place, T value)
        {
            items.Open(place);
            WriteContent(items, value);
            items.Close();
        }
        protected override T ReadThere(ItemsIn items, int node)
        {
            items.Enter(node);
            T value = null;
            ReadContent(items, node, ref value);
            items.Leave(node);
            return value;
        }

        public void WriteContent(ItemsOut items, T value)
        {
            Type type = value.GetType();
            foreach (Kind kind in m_kinds)
            {
                if (kind.Type != type) continue;
                kind.Write(items, value);
                return;
            }
            items.Fail("a type that is not among the kinds of its base");
        }
        public void ReadContent(ItemsIn items, int node, ref T value)
        {
            foreach (Kind kind in m_kinds)
            {
                int found = items.Find(node, kind.Place);
                if (found == 0) continue;
                items.Take(found);
                value = kind.Read(items, found);
                return;
            }
            items.Fail(node, "none of the kinds that are known here");
        }
    }
}
