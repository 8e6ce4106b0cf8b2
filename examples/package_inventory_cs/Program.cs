// SPDX-License-Identifier: MIT
// Reads the package database of a Debian machine, writes all of it through the serializer to a
// DGraph file and to an XML file, reads them back and compares every field.
using System;
using System.Diagnostics;
using System.IO;
using Velmar.Q7R.Serializer.Objects;

namespace Inventory
{
    internal static class Program
    {
        // Prints every difference; true when there is none.
        private static bool Compare(PackageList written, PackageList read)
        {
            bool equal = written.Packages.Count == read.Packages.Count;
            if (!equal)
                Console.WriteLine("DIFFERENT: {0} packages written, {1} read",
                                  written.Packages.Count, read.Packages.Count);
            for (int i = 0; i < Math.Min(written.Packages.Count, read.Packages.Count); ++i)
            {
                if (written.Packages[i].SameAs(read.Packages[i])) continue;
                Console.WriteLine("DIFFERENT: package {0}", written.Packages[i].Name);
                equal = false;
            }
            return equal;
        }

        private static int Run(string status, string output)
        {
            Stopwatch watch = Stopwatch.StartNew();
            Func<long> lap = () => { long ms = watch.ElapsedMilliseconds; watch.Restart(); return ms; };
            int size;
            var inventory = new PackageList { Packages = StatusFile.Read(status, out size) };
            Console.WriteLine("read      {0} packages, {1} bytes of {2} in {3} ms",
                              inventory.Packages.Count, size, status, lap());

            var serializer = new ObjectSerializer();
            byte[] bytes = serializer.WriteToBinaryBuffer(inventory);
            File.WriteAllBytes(output, bytes);
            Console.WriteLine("wrote     {0} bytes to {1} in {2} ms", bytes.Length, output, lap());

            var copy = serializer.Read<PackageList>(File.ReadAllBytes(output));
            Console.WriteLine("read back in {0} ms, objects included", lap());

            string xml = output + ".xml";
            serializer.WriteToFile(inventory, xml);
            long written = lap();
            var fromXml = serializer.ReadFromFile<PackageList>(xml);
            Console.WriteLine("as XML    {0} bytes to {1} in {2} ms, read back in {3} ms",
                              new FileInfo(xml).Length, xml, written, lap());

            if (!Compare(inventory, copy) || !Compare(inventory, fromXml)) return 1;
            Console.WriteLine("equal in every field");
            return 0;
        }

        private static int Main(string[] args)
        {
            string status = "/var/lib/dpkg/status";
            string output = Path.Combine(Path.GetTempPath(), "package_inventory.dgraph");
            for (int i = 0; i < args.Length; ++i)
            {
                if ((args[i] == "--output" || args[i] == "-o") && i + 1 < args.Length) output = args[++i];
                else if (!args[i].StartsWith("-", StringComparison.Ordinal)) status = args[i];
                else
                {
                    Console.WriteLine("usage: package_inventory [STATUS] [--output FILE]");
                    return args[i] == "--help" ? 0 : 2;
                }
            }
            try
            {
                return Run(status, output);
            }
            catch (Exception e)
            {
                if (!(e is StatusException || e is ApplicationException || e is IOException ||
                      e is UnauthorizedAccessException)) throw;
                Console.Error.WriteLine("package_inventory: " + e.Message);
                return 2;
            }
        }
    }
}
