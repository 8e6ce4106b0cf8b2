// SPDX-License-Identifier: MIT
using System;
using System.Collections.Generic;

namespace Velmar.Q7R.Serializer.Objects
{
    // A node of the field's name for each element; within another collection, a node with "item"
    // nodes. As a field, null is written as no elements.
    internal abstract class CollectionForm<C> : Form<C> where C : class
    {
        protected abstract void WriteElements(ItemsOut items, Place place, C value);
        // first: the first of them, 0 for none.
        protected abstract C ReadElements(ItemsIn items, int first, int end, Place place, C current);
        protected abstract bool IsEmptyOne(C value);

        internal override void WriteField(ItemsOut items, Place place, C value)
        {
            if (value != null) WriteElements(items, place, value);
        }
        internal override void WriteNode(ItemsOut items, Place place, C value)
        {
            if (value == null)
            {
                items.Null(place);
                return;
            }
            items.Open(place);
            WriteElements(items, place.Within.Item, value);
            items.Close();
        }

        internal override C ReadField(ItemsIn items, int node, int endOfParent, Place place, C current)
        {
            return ReadElements(items, node, endOfParent, place, current);
        }
        internal override C ReadNode(ItemsIn items, int node, Place place, C current)
        {
            if (items.IsNull(node)) return null;
            items.Enter(node);
            Place item = place.Within.Item;
            C value = ReadElements(items, items.Find(node, item), items.Behind(node), item, null);
            items.Leave(node);
            return value;
        }

        internal override bool CanBeNothing { get { return true; } }
        internal override C Nothing(C current) { return ReadElements(null, 0, 0, null, current); }
        internal override bool KeepsParts { get { return true; } }
        internal override bool IsEmpty(C value) { return value == null || IsEmptyOne(value); }
        internal override C Empty(C current) { return Nothing(current); }
    }

    internal sealed class ArrayForm<E> : CollectionForm<E[]>
    {
        private readonly Form<E> m_element;

        internal ArrayForm(Form<E> element) { m_element = element; }

        protected override bool IsEmptyOne(E[] value) { return value.Length == 0; }
        protected override void WriteElements(ItemsOut items, Place place, E[] value)
        {
            for (int i = 0; i < value.Length; ++i) m_element.WriteNode(items, place, value[i]);
        }
        protected override E[] ReadElements(ItemsIn items, int first, int end, Place place, E[] current)
        {
            int count = 0;
            for (int at = first; at != 0; at = items.Next(at, end)) ++count;
            var value = new E[count];
            int node = first;
            for (int i = 0; i < count; ++i, node = items.Next(node, end))
            {
                items.Take(node);
                value[i] = m_element.ReadNode(items, node, place, default(E));
            }
            return value;
        }
    }

    // What is there already is filled anew: it may order or compare in a way of its own.
    internal sealed class ListForm<C, E> : CollectionForm<C> where C : class, IEnumerable<E>
    {
        private readonly Form<E> m_element;
        private readonly Func<ICollection<E>> m_make;

        internal ListForm(Form<E> element, Func<ICollection<E>> make)
        {
            m_element = element;
            m_make = make;
        }

        protected override bool IsEmptyOne(C value)
        {
            foreach (E element in value) return false;
            return true;
        }
        protected override void WriteElements(ItemsOut items, Place place, C value)
        {
            var list = value as List<E>;
            if (list != null)
            {
                for (int i = 0; i < list.Count; ++i) m_element.WriteNode(items, place, list[i]);
                return;
            }
            foreach (E element in value) m_element.WriteNode(items, place, element);
        }
        protected override C ReadElements(ItemsIn items, int first, int end, Place place, C current)
        {
            var value = current as ICollection<E>;
            if (value == null || value.IsReadOnly) value = m_make();
            else value.Clear();
            var set = value as ISet<E>;
            for (int node = first; node != 0; node = items.Next(node, end))
            {
                items.Take(node);
                E element = m_element.ReadNode(items, node, place, default(E));
                if (set == null) value.Add(element);
                else if (!set.Add(element)) items.Fail(node, "the same as one before");
            }
            return (C)(object)value;
        }
    }

    // A subnode each, with "key" and "value".
    internal sealed class DictionaryForm<C, K, V> : CollectionForm<C>
        where C : class, IEnumerable<KeyValuePair<K, V>>
    {
        private readonly Form<K> m_key;
        private readonly Form<V> m_value;
        private readonly Func<IDictionary<K, V>> m_make;

        internal DictionaryForm(Form<K> key, Form<V> value, Func<IDictionary<K, V>> make)
        {
            m_key = key;
            m_value = value;
            m_make = make;
        }

        protected override bool IsEmptyOne(C value)
        {
            foreach (KeyValuePair<K, V> entry in value) return false;
            return true;
        }
        protected override void WriteElements(ItemsOut items, Place place, C value)
        {
            var known = value as Dictionary<K, V>;
            if (known != null)
            {
                foreach (KeyValuePair<K, V> entry in known) WriteEntry(items, place, entry);
                return;
            }
            foreach (KeyValuePair<K, V> entry in value) WriteEntry(items, place, entry);
        }
        private void WriteEntry(ItemsOut items, Place place, KeyValuePair<K, V> entry)
        {
            Within within = place.Within;
            items.Open(place);
            if (within.KeyFirst) m_key.WriteNode(items, within.Key, entry.Key);
            m_value.WriteField(items, within.Value, entry.Value);
            if (!within.KeyFirst) m_key.WriteNode(items, within.Key, entry.Key);
            items.Close();
        }

        protected override C ReadElements(ItemsIn items, int first, int end, Place place, C current)
        {
            var value = current as IDictionary<K, V>;
            if (value == null || value.IsReadOnly) value = m_make();
            else value.Clear();
            for (int node = first; node != 0; node = items.Next(node, end))
            {
                items.Take(node);
                items.Enter(node);
                K key = ReadPart(items, node, place.Within.Key, m_key);
                V mapped = ReadPart(items, node, place.Within.Value, m_value);
                items.Leave(node);
                if (key == null) items.Fail(node, "a key expected");
                if (value.ContainsKey(key)) items.Fail(node, "the same as one before");
                value.Add(key, mapped);
            }
            return (C)(object)value;
        }
        private static T ReadPart<T>(ItemsIn items, int entry, Place place, Form<T> form)
        {
            int node = items.Find(entry, place);
            if (node == 0) return form.CanBeNothing ? form.Nothing(default(T)) : default(T);
            items.Take(node);
            return form.ReadField(items, node, items.Behind(entry), place, default(T));
        }
    }

    internal sealed class NullableForm<T> : Form<T?> where T : struct
    {
        private readonly Form<T> m_form;

        internal NullableForm(Form<T> form) { m_form = form; }

        internal override void WriteNode(ItemsOut items, Place place, T? value)
        {
            if (value.HasValue) m_form.WriteNode(items, place, value.GetValueOrDefault());
            else items.Null(place);
        }
        internal override void WriteField(ItemsOut items, Place place, T? value)
        {
            if (value.HasValue) m_form.WriteNode(items, place, value.GetValueOrDefault());
        }
        internal override T? ReadNode(ItemsIn items, int node, Place place, T? current)
        {
            if (items.IsNull(node)) return null;
            return m_form.ReadNode(items, node, place, default(T));
        }
        internal override bool CanBeNothing { get { return true; } }
        internal override bool IsEmpty(T? value) { return !value.HasValue; }
    }
}
