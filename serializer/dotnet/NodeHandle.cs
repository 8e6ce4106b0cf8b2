// SPDX-License-Identifier: MIT
using System;
using System.Runtime.InteropServices;

namespace Velmar.Q7R.Serializer
{
    // A native handle of a node. The runtime keeps it open during every call that it is handed to,
    // whatever finalizers do meanwhile, and makes it when a call hands one out, so that nothing can
    // come in between and lose it.
    internal sealed class NodeHandle : SafeHandle
    {
        // What the native library takes for a node that was given up: every operation fails on it.
        // Never closed, as the runtime refuses to hand on what is.
        internal static readonly NodeHandle None = Lasting();

        private NodeHandle() : base(IntPtr.Zero, true)
        {
        }

        internal NodeHandle(IntPtr pData) : this()
        {
            SetHandle(pData);
        }

        public override bool IsInvalid
        {
            get { return handle == IntPtr.Zero; }
        }

        protected override bool ReleaseHandle()
        {
            Native.vok_node_free(handle);
            return true;
        }

        private static NodeHandle Lasting()
        {
            var none = new NodeHandle();
            GC.SuppressFinalize(none);
            return none;
        }
    }
}
