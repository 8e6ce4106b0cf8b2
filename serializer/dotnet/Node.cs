using System;
using System.Runtime.CompilerServices;
using System.Runtime.InteropServices;

namespace Velmar.Q7R.Serializer
{
    /// <summary>One node of the tree that an object is written to or read from.</summary>
    /// <remarks>
    /// Writing appends named successors in the order of the calls; a name may be used any number of
    /// times. Reading takes the successor of a name by its index from 0 among those of that name.
    /// Failures raise <see cref="ApplicationException"/>. A node and its tree are used from one
    /// thread at a time.
    /// </remarks>
    public class Node : IDisposable
    {
        // The native handle; zero once the node is disposed of, which every operation fails on.
        private IntPtr m_pData;

        /// <summary>A node of no tree; the first value or subnode added gives it one.</summary>
        public Node()
        {
            Native.Found(Native.NoNode,
                         Native.vok_node_create(out m_pData));
        }

        // The root of a fresh tree, or a node of no tree.
        internal Node(bool isRootNode)
        {
            Native.Found(Native.NoNode,
                         isRootNode ? Native.vok_root_create(out m_pData)
                                    : Native.vok_node_create(out m_pData));
        }

        // Takes over a native handle. A handle that is still to come is written straight into its
        // owner, so that nothing can come in between and lose it.
        internal Node(IntPtr pData)
        {
            m_pData = pData;
        }

        /// <summary>Gives up the tree of a node that nobody disposed of.</summary>
        ~Node()
        {
            Dispose(false);
        }

        /// <summary>Gives up the tree; every later operation fails. May be called again.</summary>
        public void Dispose()
        {
            Dispose(true);
            GC.SuppressFinalize(this);
        }

        /// <summary>Frees the native node, once.</summary>
        protected virtual void Dispose(bool disposing)
        {
            IntPtr pData = System.Threading.Interlocked.Exchange(ref m_pData, IntPtr.Zero);
            if (pData != IntPtr.Zero) Native.vok_node_free(pData);
        }

        // The explicit conversion to the native handle, which C# itself has for everybody or
        // not at all.
        [SpecialName]
        internal static IntPtr op_Explicit(Node node)
        {
            return node.m_pData;
        }

        /// <summary>Appends a text; null is written as the empty one.</summary>
        public void AddValue(string name, string value)
        {
            Native.Found("Failed to add Node String value",
                         Native.vok_node_add_string(m_pData, name, value));
            GC.KeepAlive(this);
        }

        /// <summary>Appends a whole number.</summary>
        public void AddValue(string name, int value)
        {
            Native.Found("Failed to add Node int value",
                         Native.vok_node_add_int(m_pData, name, value));
            GC.KeepAlive(this);
        }

        /// <summary>Appends a real number.</summary>
        public void AddValue(string name, double value)
        {
            Native.Found("Failed to add Node double value",
                         Native.vok_node_add_double(m_pData, name, value));
            GC.KeepAlive(this);
        }

        /// <summary>Appends a truth value.</summary>
        public void AddValue(string name, bool value)
        {
            Native.Found("Failed to add Node bool value",
                         Native.vok_node_add_bool(m_pData, name, value ? 1 : 0));
            GC.KeepAlive(this);
        }

        /// <summary>Appends a block of bytes; null counts as an empty one.</summary>
        public void AddValue(string name, byte[] value)
        {
            Native.Found("Failed to add Node byte array",
                         Native.vok_node_add_bytes(m_pData, name, value,
                                                   value == null ? 0 : value.Length));
            GC.KeepAlive(this);
        }

        /// <summary>Appends four whole numbers.</summary>
        public void AddValue(string name, int v1, int v2, int v3, int v4)
        {
            Native.Found("Failed to add Node quad tuple",
                         Native.vok_node_add_ints(m_pData, name, v1, v2, v3, v4));
            GC.KeepAlive(this);
        }

        /// <summary>Appends a node to be filled by the caller.</summary>
        public Node AddSubnode(string name)
        {
            var subnode = new Node(IntPtr.Zero);
            Native.Found("Failed to add subnode",
                         Native.vok_node_add_subnode(m_pData, name, out subnode.m_pData));
            GC.KeepAlive(this);
            return subnode;
        }

        // A successor that is not there leaves outputs as they were: see Untouched.

        /// <summary>Reads a text; an empty node reads as the empty one.</summary>
        public bool TryGetValue(string name, int index, out string value)
        {
            Untouched<string>.Keep(out value);
            IntPtr pText;
            int iLength;
            bool bFound = Native.FoundText(
                Native.vok_node_get_string(m_pData, name, index, out pText, out iLength));
            if (bFound) value = Utilities.Str2String(pText, iLength);
            GC.KeepAlive(this);
            return bFound;
        }

        /// <summary>Reads a whole number.</summary>
        public bool TryGetValue(string name, int index, out int value)
        {
            Untouched<int>.Keep(out value);
            bool bFound = Native.Found("Failed to get Node int value",
                Native.vok_node_get_int(m_pData, name, index, ref value));
            GC.KeepAlive(this);
            return bFound;
        }

        /// <summary>Reads a real number.</summary>
        public bool TryGetValue(string name, int index, out double value)
        {
            Untouched<double>.Keep(out value);
            bool bFound = Native.Found("Failed to get Node double value",
                Native.vok_node_get_double(m_pData, name, index, ref value));
            GC.KeepAlive(this);
            return bFound;
        }

        /// <summary>Reads a truth value.</summary>
        public bool TryGetValue(string name, int index, out bool value)
        {
            Untouched<bool>.Keep(out value);
            int iValue;
            bool bFound = Native.Found("Failed to get Node bool value",
                Native.vok_node_get_bool(m_pData, name, index, out iValue));
            if (bFound) value = iValue != 0;
            GC.KeepAlive(this);
            return bFound;
        }

        /// <summary>Reads a block of bytes.</summary>
        public bool TryGetValue(string name, int index, out byte[] value)
        {
            Untouched<byte[]>.Keep(out value);
            IntPtr pBytes;
            int iSize;
            bool bFound = Native.Found("Failed to get Node byte array",
                Native.vok_node_get_bytes(m_pData, name, index, out pBytes, out iSize));
            if (bFound)
            {
                try { value = new byte[iSize]; }
                catch (OutOfMemoryException)
                {
                    throw new ApplicationException("Failed to get Node byte array");
                }
                if (iSize > 0) Marshal.Copy(pBytes, value, 0, iSize);
            }
            GC.KeepAlive(this);
            return bFound;
        }

        /// <summary>Reads four whole numbers: those that exist; true when all do.</summary>
        public bool TryGetValue(string name, int index, out int v1, out int v2,
                                out int v3, out int v4)
        {
            Untouched<int>.Keep(out v1);
            Untouched<int>.Keep(out v2);
            Untouched<int>.Keep(out v3);
            Untouched<int>.Keep(out v4);
            bool bFound = Native.Found("Failed to get Node int value",
                Native.vok_node_get_ints(m_pData, name, index, ref v1, ref v2, ref v3, ref v4));
            GC.KeepAlive(this);
            return bFound;
        }

        /// <summary>Reads the first text of that name.</summary>
        public bool TryGetValue(string name, out string value)
        {
            return TryGetValue(name, 0, out value);
        }

        /// <summary>Reads the first whole number of that name.</summary>
        public bool TryGetValue(string name, out int value)
        {
            return TryGetValue(name, 0, out value);
        }

        /// <summary>Reads the first real number of that name.</summary>
        public bool TryGetValue(string name, out double value)
        {
            return TryGetValue(name, 0, out value);
        }

        /// <summary>Reads the first truth value of that name.</summary>
        public bool TryGetValue(string name, out bool value)
        {
            return TryGetValue(name, 0, out value);
        }

        /// <summary>Reads the first block of bytes of that name.</summary>
        public bool TryGetValue(string name, out byte[] value)
        {
            return TryGetValue(name, 0, out value);
        }

        /// <summary>Reads the first four whole numbers of that name.</summary>
        public bool TryGetValue(string name, out int v1, out int v2, out int v3,
                                out int v4)
        {
            return TryGetValue(name, 0, out v1, out v2, out v3, out v4);
        }

        /// <summary>The subnode of that name with that index.</summary>
        public bool TryGetSubnode(string name, int index, out Node node)
        {
            Untouched<Node>.Keep(out node);
            var subnode = new Node(IntPtr.Zero);
            bool bFound = Native.Found("Failed to get subnode",
                Native.vok_node_get_subnode(m_pData, name, index, out subnode.m_pData));
            if (bFound) node = subnode;
            GC.KeepAlive(this);
            return bFound;
        }

        /// <summary>The first subnode of that name.</summary>
        public bool TryGetSubnode(string name, out Node node)
        {
            return TryGetSubnode(name, 0, out node);
        }

        /// <summary>The number of successors of that name.</summary>
        public int GetSubnodeCount(string name)
        {
            int iCount;
            Native.Found("Failed to get subnode count",
                         Native.vok_node_count(m_pData, name, out iCount));
            GC.KeepAlive(this);
            return iCount;
        }
    }
}
