// SPDX-License-Identifier: MIT
using System;
using System.IO;
using System.Runtime.CompilerServices;

namespace Velmar.Q7R.Serializer
{
    /// <summary>What is written to streams.</summary>
    [Flags]
    public enum StreamForm
    {
        /// <summary>A binary document, as WriteToBinaryBuffer gives it.</summary>
        DGraph = 0,
        /// <summary>XML, as WriteToFile writes it.</summary>
        Xml = 1,
        /// <summary>Either of them compressed as a zlib stream.</summary>
        Zlib = 16,
        /// <summary>Either of them compressed with gzip.</summary>
        Gzip = 32
    }

    /// <summary>Writes objects to streams and reads them back, piece by piece.</summary>
    /// <remarks>
    /// The document is never held, whatever its size; the tree is. Holds no state. Failures raise
    /// <see cref="ApplicationException"/>; exceptions of the object's own methods and of the stream
    /// pass through. What is read may come from anywhere: the memory that a document can cost is
    /// bounded.
    /// </remarks>
    public class StreamSerializer
    {
        /// <summary>Writes the object to a stream as a binary document.</summary>
        /// <exception cref="ApplicationException">"Failed to write data to stream"; "Invalid
        /// vok::Data" when WriteValues disposed of the root.</exception>
        public void WriteToStream(ISerialisable iSerialisable, Stream stream)
        {
            WriteToStream(iSerialisable, stream, StreamForm.DGraph);
        }

        /// <summary>Writes the object to a stream.</summary>
        /// <exception cref="ApplicationException">"Failed to write data to stream"; "Invalid
        /// vok::Data" when WriteValues disposed of the root.</exception>
        public void WriteToStream(ISerialisable iSerialisable, Stream stream, StreamForm form)
        {
            Garbage.Release(Save(iSerialisable, new StreamPieces(stream), form));
        }

        /// <summary>Reads a document of any form, as it is or compressed, into the object. The
        /// stream is read to its end, or beyond that of the document.</summary>
        /// <exception cref="ApplicationException">"Failed to read data from stream";
        /// ReadValues is not called then.</exception>
        public void ReadFromStream(ISerialisable iSerialisable, Stream stream)
        {
            Garbage.Release(Load(iSerialisable, new StreamPieces(stream)));
        }

        // Methods of their own, so that a root is on no stack afterwards.

        [MethodImpl(MethodImplOptions.NoInlining)]
        private static WeakReference Save(ISerialisable iSerialisable, StreamPieces pieces,
                                          StreamForm form)
        {
            Node root = Roots.New();
            iSerialisable.WriteValues(root);
            pieces.Save(Roots.HandleOf(root), (int)form);
            return Garbage.Watch(root);
        }

        [MethodImpl(MethodImplOptions.NoInlining)]
        private static WeakReference Load(ISerialisable iSerialisable, StreamPieces pieces)
        {
            Node root = Roots.New();
            pieces.Load(Roots.HandleOf(root));
            iSerialisable.ReadValues(root);
            return Garbage.Watch(root);
        }
    }
}
