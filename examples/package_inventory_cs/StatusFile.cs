// SPDX-License-Identifier: MIT
// The package database of a Debian machine: stanzas of "Field: value" lines.
using System;
using System.Collections.Generic;
using System.Globalization;
using System.IO;
using System.Linq;
using System.Text;

namespace Inventory
{
    // Says what is wrong and where: "FILE:LINE: reason" or "FILE: reason".
    internal sealed class StatusException : Exception
    {
        internal StatusException(string message) : base(message) { }
    }

    internal sealed class StatusFile
    {
        private static readonly string[] Numbers = { "Installed-Size", "Size" };
        private static readonly string[] Dependencies = {
            "Breaks", "Conflicts", "Depends", "Enhances", "Pre-Depends", "Provides", "Recommends",
            "Replaces", "Suggests" };
        private static readonly char[] Blanks = { ' ', '\t', '\r', '\n' };

        private readonly string m_sPath;
        private readonly List<Package> m_oPackages = new List<Package>();
        private Package m_oPackage = new Package();
        private bool m_bStanza;
        private string m_sField = "";
        private readonly StringBuilder m_oValue = new StringBuilder();
        private int m_iLine;
        private int m_iFieldLine;

        private StatusFile(string path)
        {
            m_sPath = path;
        }

        // All packages of a database, and its size in bytes.
        internal static List<Package> Read(string path, out int size)
        {
            byte[] bytes = File.ReadAllBytes(path);
            size = bytes.Length;
            return new StatusFile(path).Parse(Decode(bytes));
        }

        // UTF-8, each byte that is none as the Latin-1 character of its value.
        private static string Decode(byte[] bytes)
        {
            var coding = (Encoding)new UTF8Encoding(false).Clone();
            coding.DecoderFallback = new Latin1Fallback();
            return coding.GetString(bytes);
        }

        private sealed class Latin1Fallback : DecoderFallback
        {
            public override int MaxCharCount { get { return 4; } }
            public override DecoderFallbackBuffer CreateFallbackBuffer() { return new Buffer(); }

            private sealed class Buffer : DecoderFallbackBuffer
            {
                private byte[] m_oBytes = new byte[0];
                private int m_iNext;

                public override int Remaining { get { return m_oBytes.Length - m_iNext; } }
                public override bool Fallback(byte[] bytesUnknown, int index)
                {
                    m_oBytes = (byte[])bytesUnknown.Clone();
                    m_iNext = 0;
                    return true;
                }
                public override char GetNextChar()
                {
                    return Remaining > 0 ? (char)m_oBytes[m_iNext++] : '\0';
                }
                public override bool MovePrevious() { return m_iNext > 0 && m_iNext-- > 0; }
            }
        }

        private List<Package> Parse(string text)
        {
            string[] lines = text.Split('\n');
            // A line break at the end starts no line.
            int count = lines[lines.Length - 1] == "" ? lines.Length - 1 : lines.Length;
            for (; m_iLine < count; )
            {
                string line = lines[m_iLine++];
                if (line.IndexOf('\0') >= 0) Fail("NUL byte: this is no package database", m_iLine);
                if (line.Trim(Blanks) == "")
                {
                    EndStanza();
                }
                else if (line[0] == ' ' || line[0] == '\t')
                {
                    if (m_sField == "") Fail("continuation without a field before it", m_iLine);
                    m_oValue.Append('\n').Append(line);
                }
                else
                {
                    EndField();
                    StartField(line);
                }
            }
            ++m_iLine;
            EndStanza();
            if (m_oPackages.Count == 0)
                throw new StatusException(m_sPath + ": no packages in it: this is no package database");
            return m_oPackages;
        }

        private void Fail(string reason, int line)
        {
            throw new StatusException(m_sPath + ":" + line + ": " + reason);
        }

        private void StartField(string line)
        {
            int colon = line.IndexOf(':');
            if (colon < 0) Fail("expected 'Field: value'", m_iLine);
            m_sField = line.Substring(0, colon).Trim(Blanks);
            if (m_sField == "") Fail("field without a name", m_iLine);
            m_oValue.Append(line.Substring(colon + 1).Trim(Blanks));
            m_iFieldLine = m_iLine;
        }

        private void EndField()
        {
            if (m_sField == "") return;
            string value = m_oValue.ToString();
            if (m_sField == "Package")
            {
                if (m_oPackage.Name != "") Fail("second Package field in a stanza", m_iFieldLine);
                m_oPackage.Name = value;
            }
            else if (Numbers.Contains(m_sField))
            {
                int number = 0;
                if (value.StartsWith("+", StringComparison.Ordinal) ||
                    !int.TryParse(value, NumberStyles.AllowLeadingSign, CultureInfo.InvariantCulture,
                                  out number))
                    Fail(m_sField + " is no number of 32 bits: '" + value + "'", m_iFieldLine);
                m_oPackage.Numbers[m_sField] = number;
            }
            else if (Dependencies.Contains(m_sField))
            {
                m_oPackage.Dependencies[m_sField] = ParseDependencies(value);
            }
            else
            {
                m_oPackage.Texts[m_sField] = value;
            }
            m_bStanza = true;
            m_sField = "";
            m_oValue.Length = 0;
        }

        private void EndStanza()
        {
            EndField();
            if (!m_bStanza) return;
            if (m_oPackage.Name == "") Fail("stanza without a Package field ends here", m_iLine);
            m_oPackages.Add(m_oPackage);
            m_oPackage = new Package();
            m_bStanza = false;
        }

        private static List<Dependency> ParseDependencies(string text)
        {
            var all = new List<Dependency>();
            foreach (string group in text.Split(',').Where(s => s.Trim(Blanks) != ""))
            {
                var dependency = new Dependency();
                // Blanks behind the last bar are none of the alternatives.
                string trimmed = group.TrimEnd(Blanks);
                if (trimmed.EndsWith("|")) trimmed = trimmed.Substring(0, trimmed.Length - 1);
                dependency.AddRange(trimmed.Split('|').Select(ParseAlternative));
                all.Add(dependency);
            }
            return all;
        }

        private static Alternative ParseAlternative(string text)
        {
            var alternative = new Alternative();
            text = text.Trim(Blanks);
            int end = text.IndexOfAny(new[] { ' ', '\t', '\n', '(', '[' });
            string word = end < 0 ? text : text.Substring(0, end);
            text = text.Substring(word.Length).Trim(Blanks);
            int colon = word.IndexOf(':');
            alternative.Name = colon < 0 ? word : word.Substring(0, colon);
            if (colon >= 0) alternative.Architecture = word.Substring(colon + 1);
            if (text.StartsWith("(", StringComparison.Ordinal))
            {
                int close = text.IndexOf(')');
                string version = close < 0 ? text.Substring(1) : text.Substring(1, close - 1);
                alternative.Version = version.Trim(Blanks);
                text = close < 0 ? "" : text.Substring(close + 1).Trim(Blanks);
            }
            alternative.Rest = text;
            return alternative;
        }
    }
}
