// SPDX-License-Identifier: MIT
using System;
using System.IO;

namespace Velmar.Q7R.Serializer.Objects
{
    /// <summary>Writes objects by their public properties, and reads them back.</summary>
    /// <remarks>
    /// Holds no state: one serializer may be used for any number of objects, by any number of
    /// threads. The documents are those of an object that adds the same values to a node by hand,
    /// byte for byte, and those of C++ objects with the same fields. Failures raise <see
    /// cref="ApplicationException"/> with the place and what is wrong with it:
    /// "/legs[3]/strike: Double expected, String found, byte 1234"; exceptions of the objects' own
    /// members pass through. What is read may come from anywhere: the memory that a document can
    /// cost is bounded. Reading that fails leaves an object with some of its fields read.
    /// </remarks>
    public class ObjectSerializer
    {
        /// <summary>The object as a binary document, of version 1.3 where there is a Long.</summary>
        public byte[] Write<T>(T value)
        {
            return Save(value, ObjectsNative.Newer);
        }

        /// <summary>The object as a binary document of version 1.2.</summary>
        public byte[] WriteToBinaryBuffer<T>(T value)
        {
            return Save(value, 0);
        }

        /// <summary>Writes the object to a file as XML.</summary>
        public void WriteToFile<T>(T value, string fileName)
        {
            using (NodeHandle root = Trees.Of(value))
                Native.Found("Failed to write data to file", Native.vok_save_file(root, fileName));
        }

        /// <summary>Writes the object to a stream.</summary>
        public void WriteToStream<T>(T value, Stream stream, StreamForm form = StreamForm.DGraph)
        {
            using (NodeHandle root = Trees.Of(value))
                new StreamPieces(stream).Save(root, (int)form | ObjectsNative.Newer);
        }

        /// <summary>A new object from a binary document of any version.</summary>
        public T Read<T>(byte[] bytes, ReadOptions options = null)
        {
            T value = Trees.New<T>();
            Load(bytes, ref value, options);
            return value;
        }

        /// <summary>Reads a binary document into an object that is there.</summary>
        public void ReadInto<T>(T value, byte[] bytes, ReadOptions options = null) where T : class
        {
            if (value == null) throw new ArgumentNullException("value");
            Trees.CheckInto<T>();
            Load(bytes, ref value, options);
        }

        /// <summary>A new object from an XML file.</summary>
        public T ReadFromFile<T>(string fileName, ReadOptions options = null)
        {
            T value = Trees.New<T>();
            using (NodeHandle root = Trees.Root())
            {
                Native.Found(Native.ReadFailure, Native.vok_load_file(root, fileName));
                Trees.Read(root, ref value, options, fault => ObjectsNative.vok_fail_in_file(
                    root, fault.Id, fault.Reason, fault.Found ? 1 : 0, fileName));
            }
            return value;
        }

        /// <summary>A new object from a document of any form, as it is or compressed. The stream is
        /// read to its end, or beyond that of the document.</summary>
        public T ReadFromStream<T>(Stream stream, ReadOptions options = null)
        {
            T value = Trees.New<T>();
            using (NodeHandle root = Trees.Root())
            {
                new StreamPieces(stream).Load(root);
                Trees.Read(root, ref value, options, null);
            }
            return value;
        }

        private static byte[] Save<T>(T value, int form)
        {
            IntPtr bytes = IntPtr.Zero;
            int size;
            try
            {
                using (NodeHandle root = Trees.Of(value))
                    Native.Found(Native.BufferFailure,
                                 ObjectsNative.vok_save_buffer_as(root, form, ref bytes, out size));
                return Utilities.Bytes(bytes, size);
            }
            finally
            {
                Native.vok_bytes_free(bytes);
            }
        }

        private static void Load<T>(byte[] bytes, ref T value, ReadOptions options)
        {
            using (NodeHandle root = Trees.Root())
            {
                int size = bytes == null ? 0 : bytes.Length;
                Native.Found(Native.ReadFailure, Native.vok_load_buffer(root, bytes, size));
                Trees.Read(root, ref value, options, fault => ObjectsNative.vok_fail_in_buffer(
                    root, fault.Id, fault.Reason, fault.Found ? 1 : 0, bytes, size));
            }
        }
    }

    /// <summary>An object with fields where an ISerialisable is asked for.</summary>
    public class Serialisable<T> : ISerialisable
    {
        /// <summary>Refers to an object.</summary>
        public Serialisable(T value)
        {
            Value = value;
        }

        /// <summary>The object; a new one for structures that were read.</summary>
        public T Value { get; private set; }

        /// <summary>Adds the object's fields below a node.</summary>
        public void WriteValues(Node node)
        {
            Trees.Write(HandleOf(node), Value);
        }

        /// <summary>Takes the object's fields from a node.</summary>
        public void ReadValues(Node node)
        {
            T value = Value;
            Trees.Read(HandleOf(node), ref value, null, null);
            Value = value;
        }

        private static NodeHandle HandleOf(Node node)
        {
            if (node == null) throw new ArgumentNullException("node");
            return node.Handle;
        }
    }
}
