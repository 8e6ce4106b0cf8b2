using System;
using System.Diagnostics;
using System.Threading;

namespace Velmar.Q7R.Serializer
{
    // Trees that objects leave behind. To the collector a tree of gigabytes is one small object,
    // so it is started here once too much native memory has come together.
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

        // Gives the finalizers, which may be slower than those who make garbage, time to catch up;
        // but no more than that: they may wait for a lock of this very thread.
        private static void Collect(long iBefore)
        {
            GC.Collect();
            Stopwatch clock = Stopwatch.StartNew();
            while (Native.vok_live_bytes() > iBefore / 2 && clock.ElapsedMilliseconds < Patience)
            {
                Thread.Sleep(1);
            }
        }

        private static long LimitAbove(long iBytes)
        {
            return iBytes + Math.Max(Step, iBytes);
        }
    }
}
