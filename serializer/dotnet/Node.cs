// SPDX-License-Identifier: MIT
using System;
using System.Runtime.CompilerServices;
using System.Threading;

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
        // Null once the node is disposed of, and where no constructor ran.
        private NodeHandle m_oHandle;

        /// <summary>A node of no tree; the first value or subnode added gives it one.</summary>
        public Node()
        {
            Native.Found(Native.NoNode, Native.vok_node_create(out m_oHandle));
        }

        // The root of a fresh tree, or a node of no tree.
        internal Node(bool isRootNode)
        {
            Native.Found(Native.NoNode,
                         isRootNode ? Native.vok_root_create(out m_oHandle)
                                    : Native.vok_node_create(out m_oHandle));
        }

        // Takes over a native handle; zero stands for one that is still to come.
        internal Node(IntPtr pData)
        {
            if (pData != IntPtr.Zero) m_oHandle = new NodeHandle(pData);
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
            NodeHandle handle = Interlocked.Exchange(ref m_oHandle, null);
            // A finalizer leaves it to the handle's own: a call may be about to use it.
            if (disposing && handle != null) handle.Dispose();
        }

        // The explicit conversion to the native handle, which C# itself has for everybody or
        // not at all.
        [SpecialName]
        internal static IntPtr op_Explicit(Node node)
        {
            return node.Handle.DangerousGetHandle();
        }

        // What native calls take.
        internal NodeHandle Handle
        {
            get { return m_oHandle ?? NodeHandle.None; }
        }

        /// <summary>Appends a text; null is written as the empty one.</summary>
        public void AddValue(string name, string value)
        {
            Native.Found("Failed to add Node String value",
                         Native.vok_node_add_string(Handle, name, value));
        }

        /// <summary>Appends a whole number.</summary>
        public void AddValue(string name, int value)
        {
            Native.Found("Failed to add Node int value",
                         Native.vok_node_add_int(Handle, name, value));
        }

        /// <summary>Appends a real number.</summary>
        public void AddValue(string name, double value)
        {
            Native.Found("Failed to add Node double value",
                         Native.vok_node_add_double(Handle, name, value));
        }

        /// <summary>Appends a truth value.</summary>
        public void AddValue(string name, bool value)
        {
            Native.Found("Failed to add Node bool value",
                         Native.vok_node_add_bool(Handle, name, value ? 1 : 0));
        }

        /// <summary>Appends a block of bytes; null counts as an empty one.</summary>
        public void AddValue(string name, byte[] value)
        {
            Native.Found("Failed to add Node byte array",
                         Native.vok_node_add_bytes(Handle, name, value,
                                                   value == null ? 0 : value.Length));
        }

        /// <summary>Appends four whole numbers.</summary>
        public void AddValue(string name, int v1, int v2, int v3, int v4)
        {
            Native.Found("Failed to add Node quad tuple",
                         Native.vok_node_add_ints(Handle, name, v1, v2, v3, v4));
        }

        /// <summary>Appends a node to be filled by the caller.</summary>
        public Node AddSubnode(string name)
        {
            var subnode = new Node(IntPtr.Zero);
            Native.Found("Failed to add subnode",
                         Native.vok_node_add_subnode(Handle, name, out subnode.m_oHandle));
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
                Native.vok_node_get_string(Handle, name, index, out pText, out iLength));
            if (bFound) value = Utilities.Str2String(pText, iLength);
            return bFound;
        }

        /// <summary>Reads a whole number.</summary>
        public bool TryGetValue(string name, int index, out int value)
        {
            Untouched<int>.Keep(out value);
            return Native.Found("Failed to get Node int value",
                Native.vok_node_get_int(Handle, name, index, ref value));

        }

        /// <summary>Reads a real number.</summary>
        public bool TryGetValue(string name, int index, out double value)
        {
            Untouched<double>.Keep(out value);
            return Native.Found("Failed to get Node double value",
                Native.vok_node_get_double(Handle, name, index, ref value));

        }

        /// <summary>Reads a truth value.</summary>
        public bool TryGetValue(string name, int index, out bool value)
        {
            Untouched<bool>.Keep(out value);
            int iValue;
            bool bFound = Native.Found("Failed to get Node bool value",
                Native.vok_node_get_bool(Handle, name, index, out iValue));
            if (bFound) value = iValue != 0;
            return bFound;
        }

        /// <summary>Reads a block of bytes.</summary>
        public bool TryGetValue(string name, int index, out byte[] value)
        {
            Untouched<byte[]>.Keep(out value);
            NodeHandle handle = Handle;
            bool bHeld = false;
            try
            {
                // The bytes lie in the tree.
                handle.DangerousAddRef(ref bHeld);
                IntPtr pBytes;
                int iSize;
                bool bFound = Native.Found("Failed to get Node byte array",
                    Native.vok_node_get_bytes(handle, name, index, out pBytes, out iSize));
                if (bFound) value = Utilities.Bytes(pBytes, iSize);
                return bFound;
            }
            catch (OutOfMemoryException)
            {
                throw new ApplicationException("Failed to get Node byte array");
            }
            finally
            {
                if (bHeld) handle.DangerousRelease();
            }
        }

        /// <summary>Reads four whole numbers: those that exist; true when all do.</summary>
        public bool TryGetValue(string name, int index, out int v1, out int v2,
                                out int v3, out int v4)
        {
            Untouched<int>.Keep(out v1);
            Untouched<int>.Keep(out v2);
            Untouched<int>.Keep(out v3);
            Untouched<int>.Keep(out v4);
            return Native.Found("Failed to get Node int value",
                Native.vok_node_get_ints(Handle, name, index, ref v1, ref v2, ref v3, ref v4));

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
                Native.vok_node_get_subnode(Handle, name, index, out subnode.m_oHandle));
            if (bFound) node = subnode;
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
                         Native.vok_node_count(Handle, name, out iCount));
            return iCount;
        }
    }
}
