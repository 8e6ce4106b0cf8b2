// SPDX-License-Identifier: MIT
using System;
using System.Collections.Generic;
using System.Runtime.InteropServices;

namespace Velmar.Q7R.Serializer.Objects
{
    // What does not fit: the native library tells where in the document that is.
    internal sealed class CannotRead : Exception
    {
        internal readonly int Id;
        internal readonly string Reason;
        internal readonly bool Found;

        internal CannotRead(int id, string reason, bool found)
        {
            Id = id;
            Reason = reason;
            Found = found;
        }
    }

    // An attribute of a node.
    internal struct AttributeText
    {
        internal string Text;
        internal bool IsReal;
        internal double Real;
    }

    // A tree as the native library gives it in one call. Nodes are places in its bytes; 0 is none.
    internal sealed class ItemsIn
    {
        private const int MostNames = 4096;  // bytes
        // Of a node: its size, id, name, type and number of attributes stand in front.
        private const int Head = 17;

        [ThreadStatic]
        private static Kept s_kept;
        [ThreadStatic]
        private static byte[] s_nameBytes;
        [ThreadStatic]
        private static string[] s_names;

        private readonly NodeHandle m_root;
        private readonly byte[] m_bytes;
        private readonly string[] m_names;
        private readonly HashSet<int> m_taken;  // where unknown ones are refused
        private int[] m_starts = new int[64];
        private int m_startsUsed;
        private int m_depth;

        // Null for a node of no tree, which has no fields.
        internal static ItemsIn Of(NodeHandle root, bool refuseUnknown)
        {
            IntPtr items = IntPtr.Zero;
            int size;
            if (!Native.FoundText(ObjectsNative.vok_node_get_items(root, ref items, out size))) return null;
            try
            {
                return new ItemsIn(root, refuseUnknown, items, size);
            }
            finally
            {
                Native.vok_bytes_free(items);
            }
        }

        private ItemsIn(NodeHandle root, bool refuseUnknown, IntPtr items, int size)
        {
            m_root = root;
            if (refuseUnknown) m_taken = new HashSet<int>();
            m_bytes = s_kept.Take(size);
            Marshal.Copy(items, m_bytes, 0, size);
            m_names = Names(Int32At(0), size);
        }

        // Documents that follow each other mostly have the same names: then they are not made again.
        private string[] Names(int at, int end)
        {
            byte[] last = s_nameBytes;
            if (last != null && last.Length == end - at)
            {
                int i = 0;
                while (i < last.Length && last[i] == m_bytes[at + i]) ++i;
                if (i == last.Length) return s_names;
            }
            var bytes = new byte[end - at];
            Buffer.BlockCopy(m_bytes, at, bytes, 0, bytes.Length);
            var names = new string[Int32At(at)];
            at += 4;
            for (int i = 0; i < names.Length; ++i)
            {
                names[i] = TextAt(at);
                at += 4 + Int32At(at);
            }
            if (bytes.Length <= MostNames)
            {
                s_nameBytes = bytes;
                s_names = names;
            }
            return names;
        }

        // The bytes are used no more.
        internal void Release()
        {
            s_kept.Give(m_bytes);
        }

        internal const int Root = 4;

        // ---- nodes ------------------------------------------------------------

        internal int IdOf(int node) { return Int32At(node + 4); }
        internal int NumberOfName(int node) { return Int32At(node + 8); }
        internal string NameOf(int node) { return m_names[Int32At(node + 8)]; }
        internal int TypeOf(int node) { return m_bytes[node + 12]; }
        internal int Behind(int node) { return node + 4 + Int32At(node); }

        // The place of its value, and of its first successor.
        internal int ValueOf(int node)
        {
            int count = Int32At(node + 13);
            return count == 0 ? node + Head : BehindAttributes(node, count);
        }

        private int BehindAttributes(int node, int count)
        {
            int at = node + Head;
            for (; count > 0; --count)
            {
                at += 4 + Int32At(at) + 9;
                at += 4 + Int32At(at);
            }
            return at;
        }

        // The first successor of that name.
        internal int Find(int node, Place place)
        {
            if (TypeOf(node) != Code.Tree) return 0;
            int end = Behind(node);
            for (int at = ValueOf(node); at < end; at = Behind(at))
            {
                if (NameOf(at) == place.Name) return at;
            }
            return 0;
        }

        // The node behind, if it has the same name and the same parent.
        internal int Next(int node, int endOfParent)
        {
            int next = Behind(node);
            return next < endOfParent && NumberOfName(next) == NumberOfName(node) ? next : 0;
        }

        internal bool GetAttribute(int node, string name, out AttributeText attribute)
        {
            attribute = new AttributeText();
            int at = node + Head;
            for (int count = Int32At(node + 13); count > 0; --count)
            {
                bool found = TextAt(at) == name;
                at += 4 + Int32At(at);
                if (found)
                {
                    attribute.IsReal = m_bytes[at] != 0;
                    attribute.Real = DoubleAt(at + 1);
                    attribute.Text = TextAt(at + 9);
                    return true;
                }
                at += 9;
                at += 4 + Int32At(at);
            }
            return false;
        }

        // Whether the node stands for what is not there.
        internal bool IsNull(int node)
        {
            AttributeText attribute;
            return TypeOf(node) == Code.Empty && Int32At(node + 13) != 0 &&
                   GetAttribute(node, "null", out attribute);
        }

        internal void Enter(int node)
        {
            int type = TypeOf(node);
            if (type != Code.Tree && type != Code.Empty) FailFound(node, "Tree");
            if (++m_depth > ItemsOut.MostDepth) Fail(node, "nested too deeply");
        }

        internal void Leave(int node)
        {
            --m_depth;
            CheckTaken(node);
        }

        // ---- fields -------------------------------------------------------------

        // Room for the places of an object's fields, all 0, which is given back at the end. Indexes
        // count from the value returned.
        internal int OpenStarts(int count)
        {
            int first = m_startsUsed;
            m_startsUsed += count;
            if (m_startsUsed > m_starts.Length)
                Array.Resize(ref m_starts, Math.Max(2 * m_starts.Length, m_startsUsed));
            Array.Clear(m_starts, first, count);
            return first;
        }
        internal void CloseStarts(int first) { m_startsUsed = first; }
        internal int StartAt(int index) { return m_starts[index]; }
        internal void SetStart(int index, int node) { m_starts[index] = node; }

        internal void Take(int node)
        {
            if (m_taken != null) m_taken.Add(node);
        }

        internal void CheckTaken(int node)
        {
            if (m_taken == null || TypeOf(node) != Code.Tree) return;
            int end = Behind(node);
            for (int at = ValueOf(node); at < end; at = Behind(at))
            {
                if (!m_taken.Contains(at)) Fail(at, "unknown field");
            }
        }

        // ---- values -------------------------------------------------------------

        internal bool Bool(int node)
        {
            if (TypeOf(node) != Code.Boolean) FailFound(node, "Boolean");
            return m_bytes[ValueOf(node)] != 0;
        }

        internal string Text(int node)
        {
            int type = TypeOf(node);
            if (type == Code.Empty) return "";
            if (type != Code.String) FailFound(node, "String");
            return TextAt(ValueOf(node));
        }

        internal byte[] Binary(int node)
        {
            if (TypeOf(node) != Code.Binary) FailFound(node, "Binary");
            int at = ValueOf(node);
            var bytes = new byte[Int32At(at)];
            Buffer.BlockCopy(m_bytes, at + 4, bytes, 0, bytes.Length);
            return bytes;
        }

        internal long Date(int node)
        {
            if (TypeOf(node) != Code.Date) FailFound(node, "Date");
            double seconds = DoubleAt(ValueOf(node));
            if (!(Math.Abs(seconds) < 9223372036854775808.0) || seconds != Math.Floor(seconds))
                FailFound(node, "a Date of whole seconds");
            return (long)seconds;
        }

        // A number between two others, its 64 bits; beyond an Integer also the decimal text that
        // older documents have for a Long.
        internal long Whole(int node, long lowest, ulong highest)
        {
            long bits;
            bool negative;
            int type = TypeOf(node);
            bool beyond = highest > int.MaxValue;
            if (type == Code.Integer)
            {
                bits = Int32At(ValueOf(node));
                negative = bits < 0;
            }
            else if (type == Code.Long)
            {
                bits = Int64At(ValueOf(node));
                negative = lowest < 0 && bits < 0;
            }
            else if (!beyond || type != Code.String ||
                     !Numbers.Parse(TextAt(ValueOf(node)), lowest < 0, out bits, out negative))
            {
                FailFound(node, beyond ? "Long" : "Integer");
                return 0;
            }
            if (!Numbers.IsWithin(bits, negative, lowest, highest))
                FailFound(node, "a number from " + Numbers.Show(lowest) + " to " + Numbers.Show(highest));
            return bits;
        }

        internal double Real(int node, string expected)
        {
            switch (TypeOf(node))
            {
                case Code.Float:
                case Code.Double:
                    return DoubleAt(ValueOf(node));
                case Code.Integer:
                    return Int32At(ValueOf(node));
                case Code.Long:
                    long value = Int64At(ValueOf(node));
                    // Beyond 53 bits a Double has gaps.
                    if (value < -(1L << 53) || value > 1L << 53)
                        FailFound(node, "a number that a Double holds");
                    return value;
                default:
                    FailFound(node, expected);
                    return 0;
            }
        }

        internal Node HostAt(int node)
        {
            IntPtr handle = IntPtr.Zero;
            Native.FoundText(ObjectsNative.vok_node_from_id(m_root, IdOf(node), ref handle));
            return new Node(handle);
        }

        // ---- failures -----------------------------------------------------------

        internal void Fail(int node, string reason)
        {
            throw new CannotRead(IdOf(node), reason, false);
        }

        // "... expected, TYPE found", with the value where it is a number.
        internal void FailFound(int node, string expected)
        {
            throw new CannotRead(IdOf(node), expected, true);
        }

        // ---- bytes --------------------------------------------------------------

        private int Int32At(int at)
        {
            byte[] b = m_bytes;
            if (BitConverter.IsLittleEndian) return BitConverter.ToInt32(b, at);
            return b[at] | b[at + 1] << 8 | b[at + 2] << 16 | b[at + 3] << 24;
        }

        private long Int64At(int at)
        {
            return (uint)Int32At(at) | (long)Int32At(at + 4) << 32;
        }

        private double DoubleAt(int at)
        {
            return BitConverter.Int64BitsToDouble(Int64At(at));
        }

        private string TextAt(int at)
        {
            return Place.Encoding.GetString(m_bytes, at + 4, Int32At(at));
        }
    }
}
