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
    /// What is read may come from anywhere: the memory that a document can cost is bounded.
    /// </remarks>
    public class Serializer : IDisposable
    {
        private const string BufferFailure = "Failed to write data to buffer";
        private const string ReadFailure = "Failed to read data from file.";

        /// <summary>A serializer.</summary>
        public Serializer()
        {
        }

        /// <summary>Writes the object to a file as XML.</summary>
        /// <exception cref="ApplicationException">"Failed to write data to file"; "Invalid
        /// vok::Data" when WriteValues disposed of the root.</exception>
        public void WriteToFile(ISerialisable iSerialisable, string fileName)
        {
            var root = new Root();
            iSerialisable.WriteValues(root);
            Native.Found("Failed to write data to file",
                         Native.vok_save_file(HandleOf(root), fileName));
            root.Weigh();
        }

        /// <summary>The object as a binary document.</summary>
        /// <exception cref="ApplicationException">"Failed to write data to buffer"; "Invalid
        /// vok::Data" when WriteValues disposed of the root.</exception>
        public byte[] WriteToBinaryBuffer(ISerialisable iSerialisable)
        {
            var root = new Root();
            iSerialisable.WriteValues(root);
            IntPtr pBytes;
            int iSize;
            Native.Found(BufferFailure,
                         Native.vok_save_buffer(HandleOf(root), out pBytes, out iSize));
            try
            {
                byte[] byteArray = new byte[iSize];
                Marshal.Copy(pBytes, byteArray, 0, iSize);
                return byteArray;
            }
            catch (OutOfMemoryException)
            {
                throw new ApplicationException(BufferFailure);
            }
            finally
            {
                Native.vok_bytes_free(pBytes);
                root.Weigh();
            }
        }

        /// <summary>Reads an XML file into the object.</summary>
        /// <exception cref="ApplicationException">"Failed to read data from file.";
        /// ReadValues is not called then.</exception>
        public void ReadFromFile(ISerialisable iSerialisable, string fileName)
        {
            IntPtr pRoot;
            Native.Found(ReadFailure, Native.vok_load_file(fileName, out pRoot));
            iSerialisable.ReadValues(new Root(pRoot));
        }

        /// <summary>Reads a binary document into the object.</summary>
        /// <exception cref="ApplicationException">"Failed to read data from file.";
        /// ReadValues is not called then.</exception>
        public void ReadFromBinaryBuffer(ISerialisable iSerialisable, byte[] byteArray)
        {
            IntPtr pRoot;
            int iSize = byteArray == null ? 0 : byteArray.Length;
            Native.Found(ReadFailure, Native.vok_load_buffer(byteArray, iSize, out pRoot));
            iSerialisable.ReadValues(new Root(pRoot));
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
