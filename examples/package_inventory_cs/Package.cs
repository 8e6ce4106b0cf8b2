// SPDX-License-Identifier: MIT
// Packages of a Debian machine: their properties are what is written and read.
using System;
using System.Collections.Generic;
using System.Linq;
using Velmar.Q7R.Serializer.Objects;

namespace Inventory
{
    // "libc6:any (>= 2.36) [amd64]" in its parts; what is missing is empty.
    [Fields(Style = NameStyle.CamelCase)]
    internal sealed class Alternative
    {
        public string Name { get; set; }
        [OmitEmpty]
        public string Architecture { get; set; }
        [OmitEmpty]
        public string Version { get; set; }  // with its relation: ">= 2.36"
        [OmitEmpty]
        public string Rest { get; set; }     // restrictions, as they stand

        public Alternative()
        {
            Name = Architecture = Version = Rest = "";
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
        [Field("name")]
        public string Name { get; set; }
        [Field("text"), Entries("field", "value")]
        public SortedDictionary<string, string> Texts { get; set; }
        [Field("number"), Entries("field", "value")]
        public SortedDictionary<string, int> Numbers { get; set; }
        // By the kind of relation; all of them must hold.
        [Field("relation"), Entries("field", "any-of"), Items("package")]
        public SortedDictionary<string, List<Dependency>> Dependencies { get; set; }

        public Package()
        {
            Name = "";
            Texts = new SortedDictionary<string, string>(StringComparer.Ordinal);
            Numbers = new SortedDictionary<string, int>(StringComparer.Ordinal);
            Dependencies = new SortedDictionary<string, List<Dependency>>(StringComparer.Ordinal);
        }

        internal bool SameAs(Package other)
        {
            return Name == other.Name && Texts.SequenceEqual(other.Texts) &&
                   Numbers.SequenceEqual(other.Numbers) &&
                   Dependencies.Keys.SequenceEqual(other.Dependencies.Keys) &&
                   Dependencies.Values.Zip(other.Dependencies.Values, (a, b) =>
                       string.Join(", ", a) == string.Join(", ", b)).All(same => same);
        }
    }

    internal sealed class PackageList
    {
        [Field("package")]
        public List<Package> Packages { get; set; }
    }
}
