// SPDX-License-Identifier: MIT
using System;
using System.Runtime.InteropServices;

namespace Velmar.Q7R.Serializer
{
    // The C interface of the native library, function by function.
    internal static class Native
    {
        private const string Library = "vok_serializer";
        private const CallingConvention Call = CallingConvention.Cdecl;

        private const int Version = 1;
        private const int Ok = 0;

        // What failures say that several operations share.
        internal const string NoNode = "Failed to make a node";
        internal const string BufferFailure = "Failed to write data to buffer";
        internal const string StreamWriteFailure = "Failed to write data to stream";
        internal const string StreamReadFailure = "Failed to read data from stream";
        internal const string ReadFailure = "Failed to read data from file.";

        static Native()
        {
            if (vok_serializer_version() != Version)
                throw new TypeLoadException("vok_serializer: wrong version of the native library");
        }

        [DllImport(Library, CallingConvention = Call)]
        private static extern int vok_serializer_version();
        [DllImport(Library, CallingConvention = Call)]
        private static extern IntPtr vok_last_error();
        [DllImport(Library, CallingConvention = Call)]
        private static extern IntPtr vok_last_error_detail();

        [DllImport(Library, CallingConvention = Call)]
        internal static extern int vok_node_create(out NodeHandle node);
        [DllImport(Library, CallingConvention = Call)]
        internal static extern int vok_root_create(out NodeHandle node);
        [DllImport(Library, CallingConvention = Call)]
        internal static extern void vok_node_free(IntPtr node);
        [DllImport(Library, CallingConvention = Call)]
        internal static extern long vok_live_bytes();

        [DllImport(Library, CallingConvention = Call, CharSet = CharSet.Unicode)]
        internal static extern int vok_node_add_string(NodeHandle node, string name, string value);
        [DllImport(Library, CallingConvention = Call, CharSet = CharSet.Unicode)]
        internal static extern int vok_node_add_int(NodeHandle node, string name, int value);
        [DllImport(Library, CallingConvention = Call, CharSet = CharSet.Unicode)]
        internal static extern int vok_node_add_double(NodeHandle node, string name, double value);
        [DllImport(Library, CallingConvention = Call, CharSet = CharSet.Unicode)]
        internal static extern int vok_node_add_bool(NodeHandle node, string name, int value);
        [DllImport(Library, CallingConvention = Call, CharSet = CharSet.Unicode)]
        internal static extern int vok_node_add_bytes(NodeHandle node, string name, byte[] bytes,
                                                      int size);
        [DllImport(Library, CallingConvention = Call, CharSet = CharSet.Unicode)]
        internal static extern int vok_node_add_ints(NodeHandle node, string name, int v1, int v2,
                                                     int v3, int v4);
        [DllImport(Library, CallingConvention = Call, CharSet = CharSet.Unicode)]
        internal static extern int vok_node_add_subnode(NodeHandle node, string name,
                                                        out NodeHandle subnode);

        [DllImport(Library, CallingConvention = Call, CharSet = CharSet.Unicode)]
        internal static extern int vok_node_get_string(NodeHandle node, string name, int index,
                                                       out IntPtr value, out int length);
        [DllImport(Library, CallingConvention = Call, CharSet = CharSet.Unicode)]
        internal static extern int vok_node_get_int(NodeHandle node, string name, int index,
                                                    ref int value);
        [DllImport(Library, CallingConvention = Call, CharSet = CharSet.Unicode)]
        internal static extern int vok_node_get_double(NodeHandle node, string name, int index,
                                                       ref double value);
        [DllImport(Library, CallingConvention = Call, CharSet = CharSet.Unicode)]
        internal static extern int vok_node_get_bool(NodeHandle node, string name, int index,
                                                     out int value);
        [DllImport(Library, CallingConvention = Call, CharSet = CharSet.Unicode)]
        internal static extern int vok_node_get_bytes(NodeHandle node, string name, int index,
                                                      out IntPtr bytes, out int size);
        [DllImport(Library, CallingConvention = Call, CharSet = CharSet.Unicode)]
        internal static extern int vok_node_get_ints(NodeHandle node, string name, int index,
                                                     ref int v1, ref int v2, ref int v3,
                                                     ref int v4);
        [DllImport(Library, CallingConvention = Call, CharSet = CharSet.Unicode)]
        internal static extern int vok_node_get_subnode(NodeHandle node, string name, int index,
                                                        out NodeHandle subnode);
        [DllImport(Library, CallingConvention = Call, CharSet = CharSet.Unicode)]
        internal static extern int vok_node_count(NodeHandle node, string name, out int count);

        [DllImport(Library, CallingConvention = Call, CharSet = CharSet.Unicode)]
        internal static extern int vok_save_file(NodeHandle root, string fileName);
        [DllImport(Library, CallingConvention = Call)]
        internal static extern int vok_save_buffer(NodeHandle root, ref IntPtr bytes, out int size);
        [DllImport(Library, CallingConvention = Call)]
        internal static extern void vok_bytes_free(IntPtr bytes);
        [DllImport(Library, CallingConvention = Call, CharSet = CharSet.Unicode)]
        internal static extern int vok_load_file(NodeHandle root, string fileName);
        [DllImport(Library, CallingConvention = Call)]
        internal static extern int vok_load_buffer(NodeHandle root, byte[] bytes, int size);

        // Pieces of a document: to the host, and from it.
        [UnmanagedFunctionPointer(Call)]
        internal delegate int Take(IntPtr context, IntPtr bytes, int size);
        [DllImport(Library, CallingConvention = Call)]
        internal static extern int vok_save_stream(NodeHandle root, int form, Take write,
                                                   IntPtr context);
        [DllImport(Library, CallingConvention = Call)]
        internal static extern int vok_load_stream(NodeHandle root, Take read, IntPtr context);

        // Whether an operation found what it was asked for; a failure raises the operation's text.
        internal static bool Found(string failure, int status)
        {
            if (status >= 0) return status == Ok;
            throw new ApplicationException(failure, Reason());
        }

        // The same, raising what the library itself says.
        internal static bool FoundText(int status)
        {
            if (status >= 0) return status == Ok;
            throw new ApplicationException(Marshal.PtrToStringUni(vok_last_error()), Reason());
        }

        // The native error behind the last failure; null when there is none.
        private static Exception Reason()
        {
            string detail = Marshal.PtrToStringUni(vok_last_error_detail());
            return string.IsNullOrEmpty(detail) ? null : new Exception(detail);
        }
    }
}
