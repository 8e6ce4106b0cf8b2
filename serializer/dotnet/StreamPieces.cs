// SPDX-License-Identifier: MIT
using System;
using System.IO;
using System.Runtime.InteropServices;

namespace Velmar.Q7R.Serializer
{
    // A stream as the native library calls it. No exception may leave these functions: the first
    // one is kept until the call is over.
    internal sealed class StreamPieces
    {
        private const int Most = 1 << 16;
        private readonly Stream m_stream;
        private readonly byte[] m_piece = new byte[Most];
        private Exception m_raised;

        internal StreamPieces(Stream stream)
        {
            if (stream == null) throw new ArgumentNullException("stream");
            m_stream = stream;
        }

        // Writes a tree to the stream.
        internal void Save(NodeHandle root, int form)
        {
            Native.Take write = Write;
            int status = Native.vok_save_stream(root, form, write, IntPtr.Zero);
            GC.KeepAlive(write);
            RaiseWhatTheStreamRaised();
            Native.Found(Native.StreamWriteFailure, status);
        }

        // Reads one from it.
        internal void Load(NodeHandle root)
        {
            Native.Take read = Read;
            int status = Native.vok_load_stream(root, read, IntPtr.Zero);
            GC.KeepAlive(read);
            RaiseWhatTheStreamRaised();
            Native.Found(Native.StreamReadFailure, status);
        }

        private int Write(IntPtr context, IntPtr bytes, int size)
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

        private int Read(IntPtr context, IntPtr bytes, int size)
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

        private void RaiseWhatTheStreamRaised()
        {
            if (m_raised != null) throw m_raised;
        }
    }
}
