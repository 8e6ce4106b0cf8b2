using System;
using System.Threading;

namespace Velmar.Q7R.Serializer
{
    // The root that an object gets. The object may keep it, so it is left to the collector. To
    // that a tree of gigabytes is one small object: it is told what hangs on each root, and
    // started where it does not listen to that (Mono) when too much has come together.
    internal sealed class Root : Node
    {
        // Bytes of trees that may come together before the first collection.
        private const long Step = 16L << 20;
        private const int Patience = 100;  // milliseconds

        // Bytes that hang on all roots, and how many of them start a collection.
        private static long s_iHanging;
        private static long s_iLimit = Step;

        private long m_iBytes;

        internal Root() : base(true)
        {
        }

        internal Root(IntPtr pData) : base(pData)
        {
            Weigh();
        }

        // Tells the collector, once, what the tree takes.
        internal void Weigh()
        {
            long iBytes = Native.vok_node_tree_bytes(op_Explicit(this));
            GC.KeepAlive(this);
            if (iBytes <= 0 || m_iBytes != 0) return;
            m_iBytes = iBytes;
            GC.AddMemoryPressure(iBytes);
            long iHanging = Interlocked.Add(ref s_iHanging, iBytes);
            if (iHanging > Interlocked.Read(ref s_iLimit)) Collect(iHanging);
        }

        // Gives the finalizers, which may be slower than those who make garbage, time to catch up;
        // but no more than that: they may wait for a lock of this very thread.
        private static void Collect(long iBefore)
        {
            GC.Collect();
            for (int i = 0; i < Patience && Interlocked.Read(ref s_iHanging) > iBefore / 4; ++i)
            {
                Thread.Sleep(1);
            }
            // What is kept on purpose must not start one collection after the other.
            Interlocked.Exchange(ref s_iLimit, LimitAbove(Interlocked.Read(ref s_iHanging)));
        }

        protected override void Dispose(bool disposing)
        {
            base.Dispose(disposing);
            long iBytes = Interlocked.Exchange(ref m_iBytes, 0);
            if (iBytes == 0) return;
            GC.RemoveMemoryPressure(iBytes);
            long iLimit = LimitAbove(Interlocked.Add(ref s_iHanging, -iBytes));
            if (iLimit < Interlocked.Read(ref s_iLimit)) Interlocked.Exchange(ref s_iLimit, iLimit);
        }

        private static long LimitAbove(long iHanging)
        {
            return iHanging + Math.Max(Step, iHanging);
        }
    }
}
