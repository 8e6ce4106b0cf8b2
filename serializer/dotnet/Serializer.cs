// SPDX-License-Identifier: MIT
using System;
using System.Runtime.CompilerServices;

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
        /// <summary>A serializer.</summary>
        public Serializer()
        {
        }

        /// <summary>Writes the object to a file as XML.</summary>
        /// <exception cref="ApplicationException">"Failed to write data to file"; "Invalid
        /// vok::Data" when WriteValues disposed of the root.</exception>
        public void WriteToFile(ISerialisable iSerialisable, string fileName)
        {
            Garbage.Release(Save(iSerialisable, fileName));
        }

        /// <summary>The object as a binary document.</summary>
        /// <exception cref="ApplicationException">"Failed to write data to buffer"; "Invalid
        /// vok::Data" when WriteValues disposed of the root.</exception>
        public byte[] WriteToBinaryBuffer(ISerialisable iSerialisable)
        {
            IntPtr pBytes = IntPtr.Zero;
            try
            {
                int iSize;
                // Before the array: a large one lets the collector look at everything, after which
                // the root is no longer young.
                Garbage.Release(Save(iSerialisable, ref pBytes, out iSize));
                return Utilities.Bytes(pBytes, iSize);
            }
            catch (OutOfMemoryException)
            {
                throw new ApplicationException(Native.BufferFailure);
            }
            finally
            {
                Native.vok_bytes_free(pBytes);
            }
        }

        /// <summary>Reads an XML file into the object.</summary>
        /// <exception cref="ApplicationException">"Failed to read data from file.";
        /// ReadValues is not called then.</exception>
        public void ReadFromFile(ISerialisable iSerialisable, string fileName)
        {
            Garbage.Release(Load(iSerialisable, fileName));
        }

        /// <summary>Reads a binary document into the object.</summary>
        /// <exception cref="ApplicationException">"Failed to read data from file.";
        /// ReadValues is not called then.</exception>
        public void ReadFromBinaryBuffer(ISerialisable iSerialisable, byte[] byteArray)
        {
            Garbage.Release(Load(iSerialisable, byteArray));
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

        // Methods of their own, so that a root is on no stack afterwards. They return what tells
        // whether the object kept it.

        [MethodImpl(MethodImplOptions.NoInlining)]
        private static WeakReference Save(ISerialisable iSerialisable, string fileName)
        {
            Node root = Roots.New();
            iSerialisable.WriteValues(root);
            Native.Found("Failed to write data to file",
                         Native.vok_save_file(Roots.HandleOf(root), fileName));
            return Garbage.Watch(root);
        }

        [MethodImpl(MethodImplOptions.NoInlining)]
        private static WeakReference Save(ISerialisable iSerialisable, ref IntPtr pBytes, out int iSize)
        {
            Node root = Roots.New();
            iSerialisable.WriteValues(root);
            Native.Found(Native.BufferFailure,
                         Native.vok_save_buffer(Roots.HandleOf(root), ref pBytes, out iSize));
            return Garbage.Watch(root);
        }

        [MethodImpl(MethodImplOptions.NoInlining)]
        private static WeakReference Load(ISerialisable iSerialisable, string fileName)
        {
            Node root = Roots.New();
            Native.Found(Native.ReadFailure, Native.vok_load_file(Roots.HandleOf(root), fileName));
            iSerialisable.ReadValues(root);
            return Garbage.Watch(root);
        }

        [MethodImpl(MethodImplOptions.NoInlining)]
        private static WeakReference Load(ISerialisable iSerialisable, byte[] byteArray)
        {
            Node root = Roots.New();
            int iSize = byteArray == null ? 0 : byteArray.Length;
            Native.Found(Native.ReadFailure,
                         Native.vok_load_buffer(Roots.HandleOf(root), byteArray, iSize));
            iSerialisable.ReadValues(root);
            return Garbage.Watch(root);
        }
    }
}
