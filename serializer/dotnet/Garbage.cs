// SPDX-License-Identifier: MIT
using System;
using System.Diagnostics;
using System.Runtime.CompilerServices;
using System.Runtime.InteropServices;
using System.Threading;

namespace Velmar.Q7R.Serializer
{
    // Trees that objects leave behind. To the collector a tree of gigabytes is one small object,
    // so it is started here once too much native memory has come together. GC.AddMemoryPressure
    // is there to tell it, but mono ignores that: it starts no collection however much is added.
    internal static class Garbage
    {
        // Bytes that trees may take before the first collection.
        private const long Step = 16L << 20;
        private const int Patience = 100;  // milliseconds

        private static long s_iLimit = Step;

        // Called before a tree is made: what was left behind until then can go.
        internal static void Bound()
        {
            long iBytes = Native.vok_live_bytes();
            if (iBytes > Interlocked.Read(ref s_iLimit))
            {
                Collect(iBytes);
                iBytes = Native.vok_live_bytes();
                // What is kept on purpose must not start one collection after the other.
                Interlocked.Exchange(ref s_iLimit, LimitAbove(iBytes));
            }
            else if (LimitAbove(iBytes) < Interlocked.Read(ref s_iLimit))
            {
                Interlocked.Exchange(ref s_iLimit, LimitAbove(iBytes));
            }
        }

        // After the use of a root: what tells whether it was kept, when trees take much memory.
        internal static WeakReference Watch(Node root)
        {
            bool bMuch = Native.vok_live_bytes() > Interlocked.Read(ref s_iLimit);
            return bMuch ? new WeakReference(root) : null;
        }

        // Gives up the tree of a root that nobody kept. It is young, so that a small part of a
        // collection finds out.
        internal static void Release(WeakReference root)
        {
            if (root == null) return;
            long iBefore = Native.vok_live_bytes();
            ClearStack();
            GC.Collect(0);
            if (!root.IsAlive) WaitForFinalizers(iBefore);
        }

        // Some runtimes take whatever lies on the stack for references; what the calls before have
        // left there would keep their root.
        [StructLayout(LayoutKind.Explicit, Size = 4096)]
        private struct Zeros
        {
            [FieldOffset(0)]
            internal int First;
        }
        [MethodImpl(MethodImplOptions.NoInlining)]
        private static int ClearStack()
        {
            var zeros = new Zeros();
            return Touch(ref zeros);
        }
        [MethodImpl(MethodImplOptions.NoInlining)]
        private static int Touch(ref Zeros zeros)
        {
            return zeros.First;
        }

        // Roots are young, and nobody but a host that keeps one holds them: the youngest generation
        // is mostly enough, which costs a small part of a whole collection.
        private static void Collect(long iBefore)
        {
            GC.Collect(0);
            if (WaitForFinalizers(iBefore)) return;
            GC.Collect();
            WaitForFinalizers(iBefore);
        }

        // Gives the finalizers, which may be slower than those who make garbage, time to catch up;
        // but no more than that: they may wait for a lock of this very thread. True when half of
        // the memory came free.
        private static bool WaitForFinalizers(long iBefore)
        {
            Stopwatch clock = Stopwatch.StartNew();
            while (Native.vok_live_bytes() > iBefore / 2)
            {
                if (clock.ElapsedMilliseconds >= Patience) return false;
                Thread.Sleep(1);
            }
            return true;
        }

        private static long LimitAbove(long iBytes)
        {
            return iBytes + Math.Max(Step, iBytes);
        }
    }
}
