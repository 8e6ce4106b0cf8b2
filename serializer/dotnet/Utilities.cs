// SPDX-License-Identifier: MIT
using System;
using System.Runtime.InteropServices;

namespace Velmar.Q7R.Serializer
{
    // What the native library hands out, copied for the host. The other way needs no code: the
    // runtime hands a string on as NUL-terminated UTF-16 for the time of a call, an array as it is.
    internal static class Utilities
    {
        // No text gives String.Empty.
        internal static string Str2String(IntPtr pText, int iLength)
        {
            if (pText == IntPtr.Zero || iLength == 0) return String.Empty;
            return Marshal.PtrToStringUni(pText, iLength);
        }

        internal static byte[] Bytes(IntPtr pBytes, int iSize)
        {
            var bytes = new byte[iSize];
            if (iSize > 0) Marshal.Copy(pBytes, bytes, 0, iSize);
            return bytes;
        }
    }
}
