// SPDX-License-Identifier: MIT
using System;
using System.Globalization;

namespace Velmar.Q7R.Serializer.Objects
{
    internal sealed class BoolForm : Form<bool>
    {
        internal override void WriteNode(ItemsOut items, Place place, bool value) { items.Bool(place, value); }
        internal override bool ReadNode(ItemsIn items, int node, Place place, bool current)
        {
            return items.Bool(node);
        }
        internal override bool IsEmpty(bool value) { return !value; }

        internal override bool FitsAttribute { get { return true; } }
        internal override void WriteAttribute(ItemsOut items, Place place, bool value)
        {
            items.Attribute(place, value ? "true" : "false");
        }
        internal override bool ReadAttribute(AttributeText attribute, out bool value)
        {
            value = attribute.Text == "true" || attribute.Text == "1";
            return value || attribute.Text == "false" || attribute.Text == "0";
        }
    }

    // Whole numbers between two others: an Integer where 32 bits with sign hold them all, else a
    // Long. Their 64 bits are those of a long.
    internal abstract class WholeForm<T> : Form<T>
    {
        private readonly long m_lowest;
        private readonly ulong m_highest;
        private readonly bool m_short;

        protected WholeForm(long lowest, ulong highest)
        {
            m_lowest = lowest;
            m_highest = highest;
            m_short = highest <= int.MaxValue;
        }

        protected abstract long BitsOf(T value);
        protected abstract T Of(long bits);

        internal override void WriteNode(ItemsOut items, Place place, T value)
        {
            if (m_short) items.Int(place, (int)BitsOf(value));
            else items.Long(place, BitsOf(value));
        }
        internal override T ReadNode(ItemsIn items, int node, Place place, T current)
        {
            return Of(items.Whole(node, m_lowest, m_highest));
        }
        internal override bool IsEmpty(T value) { return BitsOf(value) == 0; }

        internal override bool FitsAttribute { get { return true; } }
        internal override void WriteAttribute(ItemsOut items, Place place, T value)
        {
            long bits = BitsOf(value);
            items.Attribute(place, m_lowest < 0 ? Numbers.Show(bits) : Numbers.Show(unchecked((ulong)bits)));
        }
        internal override bool ReadAttribute(AttributeText attribute, out T value)
        {
            long bits;
            bool negative;
            bool fits = Numbers.Parse(attribute.Text, m_lowest < 0, out bits, out negative) &&
                        Numbers.IsWithin(bits, negative, m_lowest, m_highest);
            value = fits ? Of(bits) : default(T);
            return fits;
        }
    }

    internal sealed class SByteForm : WholeForm<sbyte>
    {
        internal SByteForm() : base(sbyte.MinValue, (ulong)sbyte.MaxValue) {}
        protected override long BitsOf(sbyte value) { return value; }
        protected override sbyte Of(long bits) { return (sbyte)bits; }
    }
    internal sealed class ByteForm : WholeForm<byte>
    {
        internal ByteForm() : base(0, byte.MaxValue) {}
        protected override long BitsOf(byte value) { return value; }
        protected override byte Of(long bits) { return (byte)bits; }
    }
    internal sealed class ShortForm : WholeForm<short>
    {
        internal ShortForm() : base(short.MinValue, (ulong)short.MaxValue) {}
        protected override long BitsOf(short value) { return value; }
        protected override short Of(long bits) { return (short)bits; }
    }
    internal sealed class UShortForm : WholeForm<ushort>
    {
        internal UShortForm() : base(0, ushort.MaxValue) {}
        protected override long BitsOf(ushort value) { return value; }
        protected override ushort Of(long bits) { return (ushort)bits; }
    }
    internal sealed class IntForm : WholeForm<int>
    {
        internal IntForm() : base(int.MinValue, int.MaxValue) {}
        protected override long BitsOf(int value) { return value; }
        protected override int Of(long bits) { return (int)bits; }
    }
    internal sealed class UIntForm : WholeForm<uint>
    {
        internal UIntForm() : base(0, uint.MaxValue) {}
        protected override long BitsOf(uint value) { return value; }
        protected override uint Of(long bits) { return (uint)bits; }
    }
    internal sealed class LongForm : WholeForm<long>
    {
        internal LongForm() : base(long.MinValue, long.MaxValue) {}
        protected override long BitsOf(long value) { return value; }
        protected override long Of(long bits) { return bits; }
    }
    internal sealed class ULongForm : WholeForm<ulong>
    {
        internal ULongForm() : base(0, ulong.MaxValue) {}
        protected override long BitsOf(ulong value) { return unchecked((long)value); }
        protected override ulong Of(long bits) { return unchecked((ulong)bits); }
    }

    internal sealed class DoubleForm : Form<double>
    {
        internal override void WriteNode(ItemsOut items, Place place, double value) { items.Double(place, value); }
        internal override double ReadNode(ItemsIn items, int node, Place place, double current)
        {
            return items.Real(node, "Double");
        }
        // Not that of a minus.
        internal override bool IsEmpty(double value) { return BitConverter.DoubleToInt64Bits(value) == 0; }

        internal override bool FitsAttribute { get { return true; } }
        internal override void WriteAttribute(ItemsOut items, Place place, double value)
        {
            items.Attribute(place, value);
        }
        internal override bool ReadAttribute(AttributeText attribute, out double value)
        {
            value = attribute.Real;
            return attribute.IsReal;
        }
    }

    internal sealed class FloatForm : Form<float>
    {
        internal override void WriteNode(ItemsOut items, Place place, float value) { items.Float(place, value); }
        internal override float ReadNode(ItemsIn items, int node, Place place, float current)
        {
            double value = items.Real(node, "Float");
            if (!Numbers.IsFloat(value)) items.FailFound(node, "a number that a Float holds");
            return (float)value;
        }
        internal override bool IsEmpty(float value) { return BitConverter.DoubleToInt64Bits(value) == 0; }

        internal override bool FitsAttribute { get { return true; } }
        internal override void WriteAttribute(ItemsOut items, Place place, float value)
        {
            items.Attribute(place, (double)value);
        }
        internal override bool ReadAttribute(AttributeText attribute, out float value)
        {
            value = (float)attribute.Real;
            return attribute.IsReal && Numbers.IsFloat(attribute.Real);
        }
    }

    // Times as numbers of 100 ns, the former since 1970 UTC.
    internal sealed class DateTimeForm : WholeForm<DateTime>
    {
        internal const long Epoch = 621355968000000000;

        internal DateTimeForm() : base(long.MinValue, long.MaxValue) {}
        protected override long BitsOf(DateTime value) { return TicksOf(value) - Epoch; }
        protected override DateTime Of(long bits) { return new DateTime(bits + Epoch, DateTimeKind.Utc); }

        internal override DateTime ReadNode(ItemsIn items, int node, Place place, DateTime current)
        {
            long bits = items.Whole(node, long.MinValue, long.MaxValue);
            if (bits < -Epoch || bits > DateTime.MaxValue.Ticks - Epoch)
                items.FailFound(node, "a time of the years 1 to 9999");
            return Of(bits);
        }
        internal override bool IsEmpty(DateTime value) { return BitsOf(value) == 0; }
        internal override DateTime Empty(DateTime current) { return Of(0); }
        internal override bool FitsAttribute { get { return false; } }

        // Nothing that is written depends on the time zone: a time of no kind is one of UTC.
        internal static long TicksOf(DateTime value)
        {
            return value.Kind == DateTimeKind.Local ? value.ToUniversalTime().Ticks : value.Ticks;
        }
    }

    internal sealed class TimeSpanForm : WholeForm<TimeSpan>
    {
        internal TimeSpanForm() : base(long.MinValue, long.MaxValue) {}
        protected override long BitsOf(TimeSpan value) { return value.Ticks; }
        protected override TimeSpan Of(long bits) { return new TimeSpan(bits); }
        internal override bool FitsAttribute { get { return false; } }
    }

    // A time as a Date, its fraction of a second cut off.
    internal sealed class DateForm : Form<DateTime>
    {
        private const long EpochSeconds = DateTimeForm.Epoch / TimeSpan.TicksPerSecond;

        internal override void WriteNode(ItemsOut items, Place place, DateTime value)
        {
            items.Date(place, SecondsOf(value));
        }
        internal override DateTime ReadNode(ItemsIn items, int node, Place place, DateTime current)
        {
            long seconds = items.Date(node);
            if (seconds < -EpochSeconds ||
                seconds > DateTime.MaxValue.Ticks / TimeSpan.TicksPerSecond - EpochSeconds)
                items.FailFound(node, "a Date in reach");
            return Of(seconds);
        }
        internal override bool IsEmpty(DateTime value) { return SecondsOf(value) == 0; }
        internal override DateTime Empty(DateTime current) { return Of(0); }

        private static long SecondsOf(DateTime value)
        {
            return DateTimeForm.TicksOf(value) / TimeSpan.TicksPerSecond - EpochSeconds;
        }
        private static DateTime Of(long seconds)
        {
            return new DateTime((seconds + EpochSeconds) * TimeSpan.TicksPerSecond, DateTimeKind.Utc);
        }
    }

    internal sealed class StringForm : Form<string>
    {
        internal override void WriteNode(ItemsOut items, Place place, string value)
        {
            if (value == null) items.Null(place);
            else items.Text(place, value);
        }
        internal override void WriteField(ItemsOut items, Place place, string value)
        {
            if (value != null) items.Text(place, value);
        }
        internal override string ReadNode(ItemsIn items, int node, Place place, string current)
        {
            return items.IsNull(node) ? null : items.Text(node);
        }
        internal override bool CanBeNothing { get { return true; } }
        internal override bool IsEmpty(string value) { return string.IsNullOrEmpty(value); }
        internal override string Empty(string current) { return ""; }

        internal override bool FitsAttribute { get { return true; } }
        internal override void WriteAttribute(ItemsOut items, Place place, string value)
        {
            items.Attribute(place, value ?? "");
        }
        internal override bool ReadAttribute(AttributeText attribute, out string value)
        {
            value = attribute.Text;
            return true;
        }
    }

    internal sealed class BytesForm : Form<byte[]>
    {
        internal override void WriteNode(ItemsOut items, Place place, byte[] value)
        {
            if (value == null) items.Null(place);
            else items.Binary(place, value);
        }
        internal override void WriteField(ItemsOut items, Place place, byte[] value)
        {
            if (value != null) items.Binary(place, value);
        }
        internal override byte[] ReadNode(ItemsIn items, int node, Place place, byte[] current)
        {
            return items.IsNull(node) ? null : items.Binary(node);
        }
        internal override bool CanBeNothing { get { return true; } }
        internal override bool IsEmpty(byte[] value) { return value == null || value.Length == 0; }
        internal override byte[] Empty(byte[] current) { return new byte[0]; }
    }

    // Values whose texts say all of them.
    internal abstract class TextForm<T> : Form<T> where T : struct, IEquatable<T>
    {
        protected abstract string Show(T value);
        protected abstract bool Parse(string text, out T value);
        protected abstract string Expected { get; }

        internal override void WriteNode(ItemsOut items, Place place, T value) { items.Text(place, Show(value)); }
        internal override T ReadNode(ItemsIn items, int node, Place place, T current)
        {
            T value;
            if (!Parse(items.Text(node), out value)) items.FailFound(node, Expected);
            return value;
        }
        internal override bool IsEmpty(T value) { return value.Equals(default(T)); }

        internal override bool FitsAttribute { get { return true; } }
        internal override void WriteAttribute(ItemsOut items, Place place, T value)
        {
            items.Attribute(place, Show(value));
        }
        internal override bool ReadAttribute(AttributeText attribute, out T value)
        {
            return Parse(attribute.Text, out value);
        }
    }

    // With all its digits: 1.50 is not 1.5.
    internal sealed class DecimalForm : TextForm<decimal>
    {
        protected override string Expected { get { return "a decimal number"; } }
        protected override string Show(decimal value) { return value.ToString(CultureInfo.InvariantCulture); }
        protected override bool Parse(string text, out decimal value)
        {
            // One with more digits than it can have would be rounded. Some runtimes drop the sign of
            // a zero.
            return decimal.TryParse(text, NumberStyles.AllowLeadingSign | NumberStyles.AllowDecimalPoint,
                                    CultureInfo.InvariantCulture, out value) &&
                   Show(value).TrimStart('-') == (text.StartsWith("-", StringComparison.Ordinal)
                                                      ? text.Substring(1) : text);
        }
        // Nor is a zero with digits empty.
        internal override bool IsEmpty(decimal value) { return Show(value) == "0"; }
    }

    internal sealed class GuidForm : TextForm<Guid>
    {
        protected override string Expected { get { return "a GUID"; } }
        protected override string Show(Guid value) { return value.ToString("D"); }
        protected override bool Parse(string text, out Guid value)
        {
            return Guid.TryParseExact(text, "D", out value);
        }
    }

    // With its offset: "2026-11-26T19:40:00.0000000+01:00".
    internal sealed class DateTimeOffsetForm : TextForm<DateTimeOffset>
    {
        protected override string Expected { get { return "a time with its offset"; } }
        protected override string Show(DateTimeOffset value)
        {
            return value.ToString("o", CultureInfo.InvariantCulture);
        }
        protected override bool Parse(string text, out DateTimeOffset value)
        {
            return DateTimeOffset.TryParseExact(text, "o", CultureInfo.InvariantCulture,
                                                DateTimeStyles.None, out value) && Show(value) == text;
        }
        internal override bool IsEmpty(DateTimeOffset value)
        {
            return value.Ticks == 0 && value.Offset == TimeSpan.Zero;
        }
    }
}
