// SPDX-License-Identifier: MIT
using System;
using System.IO;
using System.Runtime.CompilerServices;
using System.Runtime.InteropServices;

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
            Garbage.Release(Save(iSerialisable, new Pieces(stream), form));
        }

        /// <summary>Reads a document of any form, as it is or compressed, into the object. The
        /// stream is read to its end, or beyond that of the document.</summary>
        /// <exception cref="ApplicationException">"Failed to read data from stream";
        /// ReadValues is not called then.</exception>
        public void ReadFromStream(ISerialisable iSerialisable, Stream stream)
        {
            Garbage.Release(Load(iSerialisable, new Pieces(stream)));
        }

        // Methods of their own, so that a root is on no stack afterwards.

        [MethodImpl(MethodImplOptions.NoInlining)]
        private static WeakReference Save(ISerialisable iSerialisable, Pieces pieces,
                                          StreamForm form)
        {
            Node root = Roots.New();
            iSerialisable.WriteValues(root);
            Native.Take write = pieces.Write;
            int status = Native.vok_save_stream(Roots.HandleOf(root), (int)form, write,
                                                IntPtr.Zero);
            GC.KeepAlive(write);
            pieces.RaiseWhatTheStreamRaised();
            Native.Found(Native.StreamWriteFailure, status);
            return Garbage.Watch(root);
        }

        [MethodImpl(MethodImplOptions.NoInlining)]
        private static WeakReference Load(ISerialisable iSerialisable, Pieces pieces)
        {
            Node root = Roots.New();
            Native.Take read = pieces.Read;
            int status = Native.vok_load_stream(Roots.HandleOf(root), read, IntPtr.Zero);
            GC.KeepAlive(read);
            pieces.RaiseWhatTheStreamRaised();
            Native.Found(Native.StreamReadFailure, status);
            iSerialisable.ReadValues(root);
            return Garbage.Watch(root);
        }

        // A stream as the native library calls it. No exception may leave these functions: the first
        // one is kept until the call is over.
        private sealed class Pieces
        {
            private const int Most = 1 << 16;
            private readonly Stream m_stream;
            private readonly byte[] m_piece = new byte[Most];
            private Exception m_raised;

            internal Pieces(Stream stream)
            {
                if (stream == null) throw new ArgumentNullException("stream");
                m_stream = stream;
            }

            internal int Write(IntPtr context, IntPtr bytes, int size)
            {
                try
                {
                    for (int done = 0; done < size;)
                    {
                        int part = Math.Min(size - done, Most);
                        Marshal.Copy(new IntPtr(bytes.ToInt64() + done), m_piece, 0, part);
                        m_stream.Write(m_piece, 0, part);
                        done += part;
                    }
                    return 0;
                }
                catch (Exception e)
                {
                    m_raised = m_raised ?? e;
                    return 1;
                }
            }

            internal int Read(IntPtr context, IntPtr bytes, int size)
            {
                try
                {
                    int wanted = Math.Min(size, Most);
                    int read = m_stream.Read(m_piece, 0, wanted);
                    if (read < 0 || read > wanted)
                        throw new IOException("a stream read " + read + " of " + wanted + " bytes");
                    Marshal.Copy(m_piece, 0, bytes, read);
                    return read;
                }
                catch (Exception e)
                {
                    m_raised = m_raised ?? e;
                    return -1;
                }
            }

            internal void RaiseWhatTheStreamRaised()
            {
                if (m_raised != null) throw m_raised;
            }
        }
    }
}
