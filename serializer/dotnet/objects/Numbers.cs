// SPDX-License-Identifier: MIT
using System.Globalization;

namespace Velmar.Q7R.Serializer.Objects
{
    // Whole numbers of 64 bits, with and without a sign, and their texts.
    internal static class Numbers
    {
        internal static bool IsWithin(long bits, bool negative, long lowest, ulong highest)
        {
            return negative ? bits >= lowest : (ulong)bits <= highest;
        }

        // A decimal number that is all of a text. One without a sign may be the two's complement of
        // a negative number.
        internal static bool Parse(string text, bool signed, out long bits, out bool negative)
        {
            negative = false;
            if (text.StartsWith("-", System.StringComparison.Ordinal))
            {
                bool good = long.TryParse(text, NumberStyles.AllowLeadingSign,
                                          CultureInfo.InvariantCulture, out bits);
                negative = bits < 0;
                return good;
            }
            ulong value;
            bool fits = ulong.TryParse(text, NumberStyles.None, CultureInfo.InvariantCulture, out value);
            bits = unchecked((long)value);
            negative = signed && bits < 0;
            return fits;
        }

        internal static string Show(long value)
        {
            return value.ToString(CultureInfo.InvariantCulture);
        }

        internal static string Show(ulong value)
        {
            return value.ToString(CultureInfo.InvariantCulture);
        }

        // Whether a Float holds all that a Double has: what it lacks would be lost.
        internal static bool IsFloat(double value)
        {
            return double.IsNaN(value) || double.IsInfinity(value) || (double)(float)value == value;
        }
    }
}
