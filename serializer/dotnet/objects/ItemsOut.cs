// SPDX-License-Identifier: MIT
using System;
using System.Collections.Generic;

namespace Velmar.Q7R.Serializer.Objects
{
    // Codes of items, as the native header has them.
    internal static class Code
    {
        internal const byte Empty = 0, Boolean = 1, Integer = 2, Float = 4, Double = 5, Date = 6,
                            String = 7, Binary = 8, Long = 9, Tree = 13, End = 16, Null = 17,
                            Host = 18, Attribute = 19, Real = 20, Fail = 21;
    }

    // Raised behind an item that makes the native library tell why and where.
    internal sealed class CannotWrite : Exception
    {
    }

    // What objects write, gathered as bytes that the native library takes in one call.
    internal sealed class ItemsOut
    {
        // Levels of nesting that objects may have: they are written by methods that call each other.
        internal const int MostDepth = 256;
        private const int MostBytes = 0x7FFFFFC7;  // what an array can have

        [ThreadStatic]
        private static Kept s_kept;

        private byte[] m_bytes;
        private int m_size;
        private int m_depth;

        internal readonly List<ISerialisable> Hosts = new List<ISerialisable>();

        internal ItemsOut()
        {
            m_bytes = s_kept.Take(0);
        }

        internal byte[] Bytes { get { return m_bytes; } }
        internal int Size { get { return m_size; } }

        // The bytes are used no more: the next document of this thread may have the array.
        internal void Release()
        {
            s_kept.Give(m_bytes);
        }

        internal void Bool(Place place, bool value)
        {
            int at = Start(Code.Boolean, place, 1);
            m_bytes[at] = value ? (byte)1 : (byte)0;
        }

        internal void Int(Place place, int value)
        {
            Store(Start(Code.Integer, place, 4), value);
        }

        internal void Long(Place place, long value)
        {
            Store(Start(Code.Long, place, 8), value);
        }

        internal void Float(Place place, double value)
        {
            Store(Start(Code.Float, place, 8), BitConverter.DoubleToInt64Bits(value));
        }

        internal void Double(Place place, double value)
        {
            Store(Start(Code.Double, place, 8), BitConverter.DoubleToInt64Bits(value));
        }

        internal void Date(Place place, long seconds)
        {
            Store(Start(Code.Date, place, 8), BitConverter.DoubleToInt64Bits(seconds));
        }

        internal void Text(Place place, string value)
        {
            Start(Code.String, place, 0);
            Append(value);
        }

        internal void Binary(Place place, byte[] value)
        {
            int at = Start(Code.Binary, place, value.Length + 4L);
            Store(at, value.Length);
            Buffer.BlockCopy(value, 0, m_bytes, at + 4, value.Length);
        }

        internal void Null(Place place)
        {
            Start(Code.Null, place, 0);
        }

        internal void Open(Place place)
        {
            Start(Code.Tree, place, 0);
            if (++m_depth > MostDepth) Fail("nested too deeply");
        }

        internal void Close()
        {
            --m_depth;
            Ensure(1);
            m_bytes[m_size++] = Code.End;
        }

        internal void Host(Place place, ISerialisable value)
        {
            Start(Code.Host, place, 0);
            Hosts.Add(value);
        }

        internal void Attribute(Place place, string value)
        {
            Start(Code.Attribute, place, 0);
            Append(value);
        }

        internal void Attribute(Place place, double value)
        {
            Store(Start(Code.Real, place, 8), BitConverter.DoubleToInt64Bits(value));
        }

        // At the node that was appended last.
        internal void Fail(string reason)
        {
            Ensure(1);
            m_bytes[m_size++] = Code.Fail;
            Append(reason);
            throw new CannotWrite();
        }

        // At a node that was to be.
        internal void FailAt(Place place, string reason)
        {
            Start(Code.Empty, place, 0);
            Fail(reason);
        }

        // A code, a name and room for more; returns where that begins.
        private int Start(byte code, Place place, long more)
        {
            byte[] name = place.Utf8;
            Ensure(5 + name.Length + more);
            byte[] bytes = m_bytes;
            int at = m_size;
            bytes[at] = code;
            Store(at + 1, name.Length);
            at += 5;
            if (name.Length > 16)
            {
                Buffer.BlockCopy(name, 0, bytes, at, name.Length);
            }
            else
            {
                for (int i = 0; i < name.Length; ++i) bytes[at + i] = name[i];
            }
            at += name.Length;
            m_size = at + (int)more;
            return at;
        }

        private void Append(string value)
        {
            // No text has more than three bytes for each of its units.
            Ensure(4 + 3L * value.Length);
            int size = Place.Encoding.GetBytes(value, 0, value.Length, m_bytes, m_size + 4);
            Store(m_size, size);
            m_size += 4 + size;
        }

        private void Store(int at, int value)
        {
            byte[] bytes = m_bytes;
            bytes[at + 3] = (byte)(value >> 24);
            bytes[at] = (byte)value;
            bytes[at + 1] = (byte)(value >> 8);
            bytes[at + 2] = (byte)(value >> 16);
        }

        private void Store(int at, long value)
        {
            Store(at, (int)value);
            Store(at + 4, (int)(value >> 32));
        }

        private void Ensure(long more)
        {
            if (m_bytes.Length - m_size < more) Grow(m_size + more);
        }

        private void Grow(long size)
        {
            if (size > MostBytes) throw new ApplicationException(Native.BufferFailure);
            Array.Resize(ref m_bytes, (int)Math.Min(Math.Max(size, 2L * m_bytes.Length), MostBytes));
        }
    }
}
