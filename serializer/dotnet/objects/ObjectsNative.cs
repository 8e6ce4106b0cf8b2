// SPDX-License-Identifier: MIT
using System;
using System.Runtime.InteropServices;

namespace Velmar.Q7R.Serializer.Objects
{
    // The functions of the native library that the other assembly has no use for.
    internal static class ObjectsNative
    {
        private const string Library = "vok_serializer";
        private const CallingConvention Call = CallingConvention.Cdecl;

        internal const int Newer = 2;  // a form: DGraph 1.3 where there is a Long

        [DllImport(Library, CallingConvention = Call)]
        internal static extern int vok_node_add_items(NodeHandle node, byte[] items, int size,
                                                      [In, Out] IntPtr[] hosts, int count);
        [DllImport(Library, CallingConvention = Call)]
        internal static extern int vok_node_get_items(NodeHandle node, ref IntPtr items, out int size);
        [DllImport(Library, CallingConvention = Call)]
        internal static extern int vok_node_from_id(NodeHandle node, int id, ref IntPtr found);
        [DllImport(Library, CallingConvention = Call)]
        internal static extern int vok_save_buffer_as(NodeHandle root, int form, ref IntPtr bytes,
                                                      out int size);
        [DllImport(Library, CallingConvention = Call, CharSet = CharSet.Unicode)]
        internal static extern int vok_fail_in_buffer(NodeHandle root, int id, string reason, int found,
                                                      byte[] bytes, int size);
        [DllImport(Library, CallingConvention = Call, CharSet = CharSet.Unicode)]
        internal static extern int vok_fail_in_file(NodeHandle root, int id, string reason, int found,
                                                    string path);
    }
}
