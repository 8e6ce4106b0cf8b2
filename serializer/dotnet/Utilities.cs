using System;
using System.Runtime.InteropServices;

namespace Velmar.Q7R.Serializer
{
    // Texts between the host and the native library. The other way needs no code: the runtime
    // hands a string on as NUL-terminated UTF-16 for the time of a call.
    internal static class Utilities
    {
        // No text gives String.Empty.
        internal static string Str2String(IntPtr pText, int iLength)
        {
            if (pText == IntPtr.Zero || iLength == 0) return String.Empty;
            return Marshal.PtrToStringUni(pText, iLength);
        }
    }
}
