using System;
using System.Runtime.InteropServices;

namespace Velmar.Q7R.Serializer
{
    /// <summary>What a host object implements to be written and read.</summary>
    public interface ISerialisable
    {
        /// <summary>Adds the object's state below the given root.</summary>
        void WriteValues(Node node);
        /// <summary>Takes the object's state from the given root.</summary>
        void ReadValues(Node node);
    }

    /// <summary>Writes objects to XML files and binary documents, and reads them back.</summary>
    /// <remarks>
    /// Holds no state: one serializer may be used for any number of objects. Failures raise
    /// <see cref="ApplicationException"/>; exceptions of the object's own methods pass through.
    /// </remarks>
    public class Serializer : IDisposable
    {
        /// <summary>A serializer.</summary>
        public Serializer()
        {
        }

        /// <summary>Writes the object to a file as XML.</summary>
        public void WriteToFile(ISerialisable iSerialisable, string fileName)
        {
            using (Node root = new Node(true))
            {
                iSerialisable.WriteValues(root);
                Native.Found(Native.vok_save_file(HandleOf(root), fileName));
            }
        }

        /// <summary>The object as a binary document.</summary>
        public byte[] WriteToBinaryBuffer(ISerialisable iSerialisable)
        {
            using (Node root = new Node(true))
            {
                iSerialisable.WriteValues(root);
                IntPtr pBytes;
                int iSize;
                Native.Found(Native.vok_save_buffer(HandleOf(root), out pBytes, out iSize));
                try
                {
                    byte[] byteArray = new byte[iSize];
                    Marshal.Copy(pBytes, byteArray, 0, iSize);
                    return byteArray;
                }
                finally
                {
                    Native.vok_bytes_free(pBytes);
                }
            }
        }

        /// <summary>Reads an XML file into the object.</summary>
        public void ReadFromFile(ISerialisable iSerialisable, string fileName)
        {
            IntPtr pRoot;
            Native.Found(Native.vok_load_file(fileName, out pRoot));
            using (Node root = new Node(pRoot)) iSerialisable.ReadValues(root);
        }

        /// <summary>Reads a binary document into the object.</summary>
        public void ReadFromBinaryBuffer(ISerialisable iSerialisable, byte[] byteArray)
        {
            IntPtr pRoot;
            Native.Found(Native.vok_load_buffer(byteArray, byteArray == null ? 0 : byteArray.Length,
                                                out pRoot));
            using (Node root = new Node(pRoot)) iSerialisable.ReadValues(root);
        }

        /// <summary>There is nothing to give up.</summary>
        public void Dispose()
        {
            Dispose(true);
            GC.SuppressFinalize(this);
        }

        /// <summary>There is nothing to give up.</summary>
        protected virtual void Dispose(bool disposing)
        {
        }

        private static IntPtr HandleOf(Node root)
        {
            IntPtr pData = Node.op_Explicit(root);
            if (pData == IntPtr.Zero) throw new ApplicationException("Invalid vok::Data");
            return pData;
        }
    }
}
