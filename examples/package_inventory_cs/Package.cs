// SPDX-License-Identifier: MIT
// Packages of a Debian machine as objects that write and read themselves.
using System;
using System.Collections.Generic;
using System.Linq;
using Velmar.Q7R.Serializer;

namespace Inventory
{
    // "libc6:any (>= 2.36) [amd64]" in its parts; what is missing is empty.
    internal sealed class Alternative
    {
        internal string Name = "";
        internal string Architecture = "";
        internal string Version = "";  // with its relation: ">= 2.36"
        internal string Rest = "";     // restrictions, as they stand

        internal void Write(Node node)
        {
            node.AddValue("name", Name);
            if (Architecture != "") node.AddValue("architecture", Architecture);
            if (Version != "") node.AddValue("version", Version);
            if (Rest != "") node.AddValue("rest", Rest);
        }

        internal void Read(Node node)
        {
            // What is not there stays empty.
            node.TryGetValue("name", out Name);
            node.TryGetValue("architecture", out Architecture);
            node.TryGetValue("version", out Version);
            node.TryGetValue("rest", out Rest);
        }

        public override string ToString()
        {
            return Name + ":" + Architecture + " (" + Version + ") " + Rest;
        }
    }

    // One of these has to be there.
    internal sealed class Dependency : List<Alternative>
    {
        public override string ToString() { return string.Join(" | ", this); }
    }

    internal sealed class Package
    {
        internal string Name = "";
        internal readonly SortedDictionary<string, string> Texts =
            new SortedDictionary<string, string>(StringComparer.Ordinal);
        internal readonly SortedDictionary<string, int> Numbers =
            new SortedDictionary<string, int>(StringComparer.Ordinal);
        internal readonly SortedDictionary<string, List<Dependency>> Dependencies =
            new SortedDictionary<string, List<Dependency>>(StringComparer.Ordinal);

        internal void Write(Node node)
        {
            node.AddValue("name", Name);
            WriteMap(node, "text", Texts, (entry, text) => entry.AddValue("value", text));
            WriteMap(node, "number", Numbers, (entry, number) => entry.AddValue("value", number));
            WriteMap(node, "relation", Dependencies, (entry, all) => {
                foreach (Dependency dependency in all)
                {
                    using (Node anyOf = entry.AddSubnode("any-of"))
                    {
                        foreach (Alternative alternative in dependency)
                        {
                            using (Node package = anyOf.AddSubnode("package")) alternative.Write(package);
                        }
                    }
                }
            });
        }

        internal void Read(Node node)
        {
            node.TryGetValue("name", out Name);
            ReadMap(node, "text", Texts, entry => {
                string text = "";
                entry.TryGetValue("value", out text);
                return text;
            });
            ReadMap(node, "number", Numbers, entry => {
                int number = 0;
                entry.TryGetValue("value", out number);
                return number;
            });
            ReadMap(node, "relation", Dependencies, entry => Each(entry, "any-of", anyOf => {
                var dependency = new Dependency();
                dependency.AddRange(Each(anyOf, "package", package => {
                    var alternative = new Alternative();
                    alternative.Read(package);
                    return alternative;
                }));
                return dependency;
            }));
        }

        internal bool SameAs(Package other)
        {
            return Name == other.Name && Texts.SequenceEqual(other.Texts) &&
                   Numbers.SequenceEqual(other.Numbers) &&
                   Dependencies.Keys.SequenceEqual(other.Dependencies.Keys) &&
                   Dependencies.Values.Zip(other.Dependencies.Values, (a, b) =>
                       string.Join(", ", a) == string.Join(", ", b)).All(same => same);
        }

        // What read makes of each subnode of that name.
        internal static List<T> Each<T>(Node node, string name, Func<Node, T> read)
        {
            var all = new List<T>();
            Node subnode;
            for (int i = 0; node.TryGetSubnode(name, i, out subnode); ++i)
            {
                using (subnode) all.Add(read(subnode));
            }
            return all;
        }

        // A subnode per entry, so that field names need not be known when reading.
        private static void WriteMap<T>(Node node, string name, SortedDictionary<string, T> map,
                                        Action<Node, T> write)
        {
            foreach (KeyValuePair<string, T> field in map)
            {
                using (Node entry = node.AddSubnode(name))
                {
                    entry.AddValue("field", field.Key);
                    write(entry, field.Value);
                }
            }
        }

        private static void ReadMap<T>(Node node, string name, SortedDictionary<string, T> map,
                                       Func<Node, T> read)
        {
            Each(node, name, entry => {
                string field;
                entry.TryGetValue("field", out field);
                return map[field] = read(entry);
            });
        }
    }

    internal sealed class PackageList : ISerialisable
    {
        internal List<Package> Packages = new List<Package>();

        public void WriteValues(Node node)
        {
            foreach (Package package in Packages)
            {
                using (Node entry = node.AddSubnode("package")) package.Write(entry);
            }
        }

        public void ReadValues(Node node)
        {
            Packages = Package.Each(node, "package", entry => {
                var package = new Package();
                package.Read(entry);
                return package;
            });
        }
    }
}
