// SPDX-License-Identifier: MIT
namespace Velmar.Q7R.Serializer.Objects
{
    // How values of a type are written and read.
    internal abstract class Form<T>
    {
        // Exactly one node.
        internal abstract void WriteNode(ItemsOut items, Place place, T value);
        // current: what the property has, where KeepsParts.
        internal abstract T ReadNode(ItemsIn items, int node, Place place, T current);

        // All nodes of a field: none for what is not there, one for each element of a collection.
        internal virtual void WriteField(ItemsOut items, Place place, T value)
        {
            WriteNode(items, place, value);
        }

        // From the first of them.
        internal virtual T ReadField(ItemsIn items, int node, int endOfParent, Place place, T current)
        {
            return ReadNode(items, node, place, current);
        }

        // Whether a field without nodes is Nothing; it keeps its value otherwise.
        internal virtual bool CanBeNothing { get { return false; } }
        internal virtual T Nothing(T current) { return default(T); }

        // Whether reading takes the value that is there: parts of it may stay.
        internal virtual bool KeepsParts { get { return false; } }

        // What an empty value is, for those that are left out.
        internal abstract bool IsEmpty(T value);
        internal virtual T Empty(T current) { return default(T); }

        // As an attribute of the node that is open; false where the text does not fit.
        internal virtual bool FitsAttribute { get { return false; } }
        internal virtual void WriteAttribute(ItemsOut items, Place place, T value)
        {
        }
        internal virtual bool ReadAttribute(AttributeText attribute, out T value)
        {
            value = default(T);
            return false;
        }
    }
}
