// SPDX-License-Identifier: MIT
using System;
using System.Text;

namespace Velmar.Q7R.Serializer.Objects
{
    // A name of nodes, as it is written and as it is looked for.
    internal sealed class Place
    {
        internal static readonly UTF8Encoding Encoding = new UTF8Encoding(false);

        internal readonly string Name;
        internal readonly byte[] Utf8;
        internal readonly Within Within;

        internal Place(string name, Within within)
        {
            Name = name;
            Utf8 = Encoding.GetBytes(name);
            Within = within;
        }

        // The order in which documents have names: that of their bytes.
        internal int CompareTo(Place other)
        {
            int both = Math.Min(Utf8.Length, other.Utf8.Length);
            for (int i = 0; i < both; ++i)
            {
                if (Utf8[i] != other.Utf8[i]) return Utf8[i] - other.Utf8[i];
            }
            return Utf8.Length - other.Utf8.Length;
        }
    }

    // The names within the collections of a field, however deep.
    internal sealed class Within
    {
        internal static readonly Within Usual = new Within("key", "value", "item");

        internal readonly Place Key, Value, Item;
        internal readonly bool KeyFirst;

        internal Within(string key, string value, string item)
        {
            Key = new Place(key, this);
            Value = new Place(value, this);
            Item = new Place(item, this);
            KeyFirst = Key.CompareTo(Value) < 0;
        }
    }
}
