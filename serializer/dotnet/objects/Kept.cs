// SPDX-License-Identifier: MIT
using System;

namespace Velmar.Q7R.Serializer.Objects
{
    // An array that a thread's next document may have again. A large one only until the collector
    // wants its memory.
    internal struct Kept
    {
        private const int MostHeld = 1 << 16;

        private byte[] m_small;
        private WeakReference m_large;

        // One of at least that size; what is in it is anything.
        internal byte[] Take(int size)
        {
            byte[] bytes = m_large != null ? (byte[])m_large.Target : null;
            if (bytes == null) bytes = m_small;
            m_small = null;
            m_large = null;
            return bytes != null && bytes.Length >= size ? bytes : new byte[Math.Max(size, 4096)];
        }

        internal void Give(byte[] bytes)
        {
            if (bytes.Length <= MostHeld) m_small = bytes;
            else m_large = new WeakReference(bytes);
        }
    }
}
