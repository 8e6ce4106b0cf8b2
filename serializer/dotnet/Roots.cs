// SPDX-License-Identifier: MIT
using System;

namespace Velmar.Q7R.Serializer
{
    // Roots that objects write to and read from.
    internal static class Roots
    {
        // The object may keep its root, so roots are left to the collector.
        internal static Node New()
        {
            Garbage.Bound();
            return new Node(true);
        }

        internal static NodeHandle HandleOf(Node root)
        {
            if (Node.op_Explicit(root) == IntPtr.Zero)
                throw new ApplicationException("Invalid vok::Data");
            return root.Handle;
        }
    }
}
