// SPDX-License-Identifier: MIT
// What .NET answers: for each line FILE, depth limit, PATH of the file that is named, a line. The facade has no
// paths and no limits to set: it says whether it reads a document, and what is wrong with it.
using System;
using System.IO;
using Velmar.Q7R.Serializer;

internal static class Driver
{
    private sealed class Any : ISerialisable
    {
        public void WriteValues(Node node) { }
        public void ReadValues(Node node) { }
    }

    private static void Main(string[] args)
    {
        var streams = new StreamSerializer();
        foreach (string line in File.ReadLines(args[0]))
        {
            try
            {
                using (FileStream file = File.OpenRead(line.Split('\t')[0])) streams.ReadFromStream(new Any(), file);
                Console.WriteLine("good");
            }
            catch (ApplicationException e)
            {
                Console.WriteLine("error: " + (e.InnerException != null ? e.InnerException.Message : e.Message)
                    .Replace("\n", " ; "));
            }
        }
    }
}
