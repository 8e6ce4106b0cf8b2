// SPDX-License-Identifier: MIT
// The assembly as a host sees it. Prints what is wrong; the exit status tells whether anything is.
using System;
using System.Collections.Generic;
using System.Diagnostics;
using System.Globalization;
using System.IO;
using System.Linq;
using System.Reflection;
using System.Runtime.InteropServices;
using System.Runtime.Serialization;
using System.Threading;
using Velmar.Q7R.Serializer;

internal sealed class Host : ISerialisable
{
    internal Action<Node> OnWrite = node => { };
    internal Action<Node> OnRead = node => { };
    public void WriteValues(Node node) { OnWrite(node); }
    public void ReadValues(Node node) { OnRead(node); }
}

internal static class AssemblyTest
{
    private static int s_iWrong;

    private static void Check(bool good, string what)
    {
        if (good) return;
        ++s_iWrong;
        Console.WriteLine("WRONG: " + what);
    }

    private static void Equal(object actual, object expected, string what)
    {
        Check(Equals(actual, expected), what + ": " + actual + " instead of " + expected);
    }

    private static Exception Raised(Action body)
    {
        try { body(); }
        catch (ApplicationException e) { return e; }
        catch (InvalidOperationException e) { return e; }
        return new Exception("(nothing raised)");
    }

    // ---- the public surface -------------------------------------------------

    private const BindingFlags All = BindingFlags.Public | BindingFlags.NonPublic |
        BindingFlags.Instance | BindingFlags.Static | BindingFlags.DeclaredOnly;

    // Hosts may name their arguments, so the names are part of the surface.
    private static string Show(MethodBase method)
    {
        var info = method as MethodInfo;
        return (method.IsPublic ? "public " : method.IsFamily ? "protected " : "internal ") +
               (method.IsStatic ? "static " : "") +
               (method.IsVirtual && !method.IsFinal ? "virtual " : "") +
               (info != null ? info.ReturnType.Name + " " : "") + method.Name + "(" +
               String.Join(", ", method.GetParameters().Select(Show)) + ")";
    }

    private static string Show(ParameterInfo p)
    {
        string type = p.ParameterType.Name;
        return (p.IsOut ? "out " + type.TrimEnd('&') : type) + " " + p.Name;
    }

    private static void SurfaceIs(Type type, params string[] expected)
    {
        var methods = type.GetMembers(All).OfType<MethodBase>().Where(m => !m.IsPrivate);
        string[] actual = methods.Select(m => Show(m)).ToArray();
        foreach (string s in actual.Except(expected)) Check(false, type.Name + " has " + s);
        foreach (string s in expected.Except(actual)) Check(false, type.Name + " lacks " + s);
        if (type.IsInterface) return;
        Check(!type.IsSealed && type.BaseType == typeof(object), type.Name + "'s base");
        Equal(type.GetInterfaces().Single(), typeof(IDisposable), type.Name + "'s interfaces");
    }

    private static void TestSurface()
    {
        var types = typeof(Node).Assembly.GetExportedTypes().Select(t => t.Name).OrderBy(s => s);
        Equal(String.Join(" ", types), "ISerialisable Node Serializer StreamForm StreamSerializer",
              "types");
        var node = new List<string> {
            "public .ctor()", "internal .ctor(Boolean isRootNode)", "internal .ctor(IntPtr pData)",
            "public Void Dispose()", "protected virtual Void Dispose(Boolean disposing)",
            "protected virtual Void Finalize()", "internal static IntPtr op_Explicit(Node node)",
            "internal NodeHandle get_Handle()", "public Node AddSubnode(String name)",
            "public Int32 GetSubnodeCount(String name)",
            "public Boolean TryGetSubnode(String name, Int32 index, out Node node)",
            "public Boolean TryGetSubnode(String name, out Node node)",
        };
        foreach (string s in new[] { "String value", "Int32 value", "Double value", "Boolean value",
                                     "Byte[] value", "Int32 v1, Int32 v2, Int32 v3, Int32 v4" })
        {
            string outs = "out " + s.Replace(", ", ", out ");
            node.Add("public Void AddValue(String name, " + s + ")");
            node.Add("public Boolean TryGetValue(String name, Int32 index, " + outs + ")");
            node.Add("public Boolean TryGetValue(String name, " + outs + ")");
        }
        SurfaceIs(typeof(Node), node.ToArray());
        Equal(typeof(Node).GetFields(All).Single().FieldType.BaseType, typeof(SafeHandle), "field");
        Check(typeof(Node).GetMethod("op_Explicit", All).IsSpecialName, "the conversion");
        SurfaceIs(typeof(Serializer), "public .ctor()", "public Void Dispose()",
                  "protected virtual Void Dispose(Boolean disposing)",
                  "public Void WriteToFile(ISerialisable iSerialisable, String fileName)",
                  "public Byte[] WriteToBinaryBuffer(ISerialisable iSerialisable)",
                  "public Void ReadFromFile(ISerialisable iSerialisable, String fileName)",
                  "public Void ReadFromBinaryBuffer(ISerialisable iSerialisable, Byte[] byteArray)");
        Equal(typeof(Serializer).GetFields(All).Length, 0, "Serializer's fields");
        SurfaceIs(typeof(ISerialisable), "public virtual Void WriteValues(Node node)",
                  "public virtual Void ReadValues(Node node)");
    }

    // ---- values -------------------------------------------------------------

    private const string BadInt = "Failed to get Node int value";
    private const string Hard = "a\u00E4\uD83D\uDE00<]]>\r\n";

    private static void Fill(Node node)
    {
        node.AddValue(null, "no name");
        for (int i = 0; i < 2; ++i)
        {
            node.AddValue("s", i == 0 ? Hard : null);
            node.AddValue("raw", i == 0 ? new byte[] { 0, 1, 255 } : null);
            node.AddValue("i", i - 7);
            node.AddValue("d", i + 0.1);
            node.AddValue("b", i == 0);
            node.AddValue("q", i, 2, 3, 4);
            using (Node sub = node.AddSubnode("sub"))
            {
                sub.AddValue("V1", 10 + i);
                sub.AddValue("V3", 30);
            }
        }
    }

    private static readonly Node Other = new Node();

    private delegate bool First<T>(string name, out T value);
    private delegate bool Nth<T>(string name, int index, out T value);

    private static string Text(object value)
    {
        if (value is byte[]) return BitConverter.ToString((byte[])value);
        if (value is double) return ((double)value).ToString("R", CultureInfo.InvariantCulture);
        int number;
        if (value is Node) return ((Node)value).TryGetValue("V1", out number) + " " + number;
        return value.ToString();
    }

    // Both values of a name, and what is left of a variable where there is none.
    private static void Reads<T>(string name, T old, First<T> first, Nth<T> nth,
                                 string value0, string value1)
    {
        T value = old;
        Check(!first("none", out value) && !nth(name, 2, out value) && !nth(name, -1, out value) &&
              Equals(value, old), "no " + name);
        Check(first(name, out value) && Text(value) == value0, name + " is " + Text(value));
        Check(nth(name, 1, out value) && Text(value) == value1, name + "[1] is " + Text(value));
    }

    private static void Verify(Node node)
    {
        Reads<string>("s", "old", node.TryGetValue, node.TryGetValue, Hard, "");
        Reads<int>("i", 77, node.TryGetValue, node.TryGetValue, "-7", "-6");
        Reads<double>("d", 77, node.TryGetValue, node.TryGetValue, "0.1", "1.1");
        Reads<bool>("b", true, node.TryGetValue, node.TryGetValue, "True", "False");
        Reads<byte[]>("raw", new byte[1], node.TryGetValue, node.TryGetValue, "00-01-FF", "");
        Reads<Node>("sub", Other, node.TryGetSubnode, node.TryGetSubnode, "True 10", "True 11");
        int a = 5, b = 5, c = 5, d = 5;
        Func<string> four = () => a + " " + b + " " + c + " " + d;
        Check(!node.TryGetValue("sub", out a, out b, out c, out d) && four() == "10 5 30 5", "3");
        Check(node.TryGetValue("q", out a, out b, out c, out d) && four() == "0 2 3 4", "four");
        Check(node.TryGetValue("q", 1, out a, out b, out c, out d) && four() == "1 2 3 4", "1");
        Check(!node.TryGetValue("q", 2, out b, out c, out d, out a) && four() == "1 2 3 4", "2");
        string s;
        Check(node.TryGetValue(null, out s) && s == "no name", "no name");
        Equal(node.GetSubnodeCount("s") + 10 * node.GetSubnodeCount("none"), 2, "counts");
        // Another type.
        Equal(Raised(() => node.TryGetValue("s", out a)).Message, BadInt, "wrong type");
        string text = Raised(() => node.TryGetValue("i", out s)).Message;
        Check(text.StartsWith("node \"i\" with wrong data type: 'String' expected") &&
              text.Contains("vok::Data::"), "native text: " + text);
    }

    private static void TestRoundTrips(string folder)
    {
        int calls = 0;
        var host = new Host { OnWrite = Fill, OnRead = node => { Verify(node); ++calls; } };
        using (var serializer = new Serializer())
        {
            byte[] bytes = serializer.WriteToBinaryBuffer(host);
            serializer.ReadFromBinaryBuffer(host, bytes);
            string file = Path.Combine(folder, "\u00E4.xml");
            serializer.WriteToFile(host, file);
            serializer.ReadFromFile(host, file);
            Equal(calls, 2, "reads");
            Check(serializer.WriteToBinaryBuffer(host).SequenceEqual(bytes), "same bytes again");
        }
    }

    // Fails with the n-th call.
    private sealed class Failing : MemoryStream
    {
        internal int In;
        public override void Write(byte[] buffer, int offset, int count)
        {
            if (--In == 0) throw new IOException("mine");
            base.Write(buffer, offset, count);
        }
        public override int Read(byte[] buffer, int offset, int count)
        {
            if (--In == 0) throw new IOException("mine");
            return base.Read(buffer, offset, Math.Min(count, 100));
        }
    }

    private static string Passed(Action body)
    {
        try { body(); }
        catch (Exception e) { return e.GetType().Name + " " + e.Message; }
        return "";
    }

    // Says that it has read more than it was asked for.
    private sealed class Boasting : MemoryStream
    {
        internal Boasting(byte[] bytes) : base(bytes) {}
        public override int Read(byte[] buffer, int offset, int count)
        {
            return base.Read(buffer, offset, count) + count;
        }
    }

    private static void TestStreams()
    {
        var streams = new StreamSerializer();
        int calls = 0;
        var host = new Host { OnWrite = Fill, OnRead = node => { Verify(node); ++calls; } };
        byte[] plain = new Serializer().WriteToBinaryBuffer(host);
        foreach (StreamForm form in new[] { StreamForm.DGraph, StreamForm.Xml, StreamForm.Zlib,
                                            StreamForm.Xml | StreamForm.Gzip })
        {
            var stream = new Failing { In = -1 };
            streams.WriteToStream(host, stream, form);
            if (form == StreamForm.DGraph) Check(stream.ToArray().SequenceEqual(plain), "stream's bytes");
            stream.Position = 0;
            streams.ReadFromStream(host, stream);
            stream.Position = 0;
            stream.In = 2;
            Equal(Passed(() => streams.ReadFromStream(host, stream)), "IOException mine", "reading");
            stream.In = 1;
            Equal(Passed(() => streams.WriteToStream(host, stream, form)), "IOException mine", "writing");
        }
        Equal(calls, 4, "reads of streams");
        Equal(Raised(() => streams.ReadFromStream(host, new MemoryStream(plain, 0, 20))).Message,
              "Failed to read data from stream", "cut stream");
        Check(Passed(() => streams.ReadFromStream(host, new Boasting(plain))).StartsWith("IOException a stream read"),
              "a stream that reads too much");
        Check(Passed(() => streams.WriteToStream(host, null)).StartsWith("ArgumentNullException"), "null");
    }

    private static void TestFailures(string folder)
    {
        const string read = "Failed to read data from file.", gone = "Invalid vok::Data";
        var serializer = new Serializer();
        var host = new Host { OnRead = n => Check(false, "read from nothing") };
        var disposing = new Host { OnWrite = n => n.Dispose() };
        var raising = new Host { OnWrite = n => { throw new InvalidOperationException("mine"); } };
        string bad = Path.Combine(folder, "bad.xml"), text = "old";
        File.WriteAllText(bad, "<a>\n  <b><c></d></b></a>");
        var node = new Node();
        node.AddValue("x", 1);
        for (int i = 0; i < 2; ++i) node.Dispose();
        int number = 7, n2;
        double real;
        bool flag;
        byte[] raw;
        Node sub;
        var cases = new Dictionary<Action, string> {
            { () => serializer.ReadFromFile(host, null), read },
            { () => serializer.ReadFromFile(host, bad), read },
            { () => serializer.ReadFromBinaryBuffer(host, new byte[8]), read },
            { () => serializer.ReadFromBinaryBuffer(host, null), read },
            { () => serializer.WriteToFile(host, ""), "Failed to write data to file" },
            { () => serializer.WriteToFile(disposing, "x"), gone },
            { () => serializer.WriteToBinaryBuffer(disposing), gone },
            { () => serializer.WriteToBinaryBuffer(raising), "mine" },
            // A node that was disposed of.
            { () => node.AddValue("x", "y"), "Failed to add Node String value" },
            { () => node.AddValue("x", 1), "Failed to add Node int value" },
            { () => node.AddValue("x", 1.5), "Failed to add Node double value" },
            { () => node.AddValue("x", true), "Failed to add Node bool value" },
            { () => node.AddValue("x", new byte[1]), "Failed to add Node byte array" },
            { () => node.AddValue("x", 1, 2, 3, 4), "Failed to add Node quad tuple" },
            { () => node.AddSubnode("x"), "Failed to add subnode" },
            { () => node.TryGetValue("x", out text), "object points to nothing\n" },
            { () => node.TryGetValue("x", out number), BadInt },
            { () => node.TryGetValue("x", out real), "Failed to get Node double value" },
            { () => node.TryGetValue("x", out flag), "Failed to get Node bool value" },
            { () => node.TryGetValue("x", out raw), "Failed to get Node byte array" },
            { () => node.TryGetValue("x", out number, out n2, out n2, out n2), BadInt },
            { () => node.TryGetSubnode("x", out sub), "Failed to get subnode" },
            { () => node.GetSubnodeCount("x"), "Failed to get subnode count" },
        };
        foreach (var c in cases) Equal(Raised(c.Key).Message, c.Value, "failure");
        Check(text == "old" && number == 7, "outputs of a disposed node");
        // The reason, and the place; none where nothing more is to be said.
        string reason = Raised(() => serializer.ReadFromFile(host, bad)).InnerException.Message;
        Check(reason.StartsWith("no XML stream or stream is corrupted\nat byte ") &&
              reason.Contains(", line 2, column ") &&
              reason.Contains("vok::Data::LoadFromXML\n"), "reason: " + reason);
        Equal(Raised(() => serializer.WriteToFile(disposing, "x")).InnerException, null, "reason");
    }

    // ---- lifetime -----------------------------------------------------------

    [DllImport("vok_serializer", CallingConvention = CallingConvention.Cdecl)]
    private static extern long vok_live_nodes();
    [DllImport("vok_serializer", CallingConvention = CallingConvention.Cdecl)]
    private static extern long vok_live_bytes();
    [DllImport("vok_serializer", CallingConvention = CallingConvention.Cdecl)]
    private static extern int vok_set_banner(int on);

    private sealed class Unfinished : Node
    {
        internal Unfinished() { throw new InvalidOperationException("in the constructor"); }
    }

    // In a thread whose stack is gone afterwards: what it leaves is garbage.
    private static void InPassing(ThreadStart body)
    {
        var thread = new Thread(body);
        thread.Start();
        thread.Join();
        for (int i = 0; i < 3; ++i)
        {
            GC.Collect();
            GC.WaitForPendingFinalizers();
        }
    }

    private static void TestLifetime()
    {
        Node kept = null;
        InPassing(() => { });
        long before = vok_live_nodes();
        InPassing(() => {
            // Finalizers free handles of the tree that this thread works on.
            var root = new Node();
            for (int i = 0; i < 20000; ++i)
            {
                root.AddSubnode("n").AddValue("i", i);
                if (i % 5000 == 0) GC.Collect(0);
            }
            int value = -1;
            for (int i = 0; i < 20000; i += 99)
            {
                Node sub;
                Check(root.TryGetSubnode("n", i, out sub) && sub.TryGetValue("i", out value) &&
                      value == i, "subnode " + i);
            }
            Raised(() => new Unfinished());
            // No constructor at all: nothing to free, and nothing to use.
            var unmade = (Node)FormatterServices.GetUninitializedObject(typeof(Node));
            Equal(Raised(() => unmade.GetSubnodeCount("x")).Message, "Failed to get subnode count",
                  "unmade node");
            var serializer = new Serializer();
            var host = new Host { OnWrite = Fill, OnRead = node => kept = node };
            serializer.ReadFromBinaryBuffer(host, serializer.WriteToBinaryBuffer(host));
        });
        // An object may keep its root, and the tree with it.
        InPassing(() => Verify(kept));
        Equal(kept.GetType(), typeof(Node), "type of a root");
        Equal(vok_live_nodes() - before, 1L, "native nodes beside the one kept");
        kept.Dispose();
        Equal(vok_live_nodes() - before, 0L, "native nodes left");
        // Loading the library switched the lines for failures off; they can be switched on.
        Check(vok_set_banner(1) == 0 && vok_set_banner(0) == 1, "banner");
    }

    // Trees that are left behind, by calls that fail as well, are collected in time; nobody waits
    // for one that was given up.
    private static void TestGarbage()
    {
        var serializer = new Serializer();
        var block = new byte[1 << 20];
        var host = new Host { OnWrite = node => node.AddValue("block", block) };
        Action[] calls = {
            () => serializer.WriteToBinaryBuffer(host),
            () => Raised(() => serializer.WriteToFile(host, "")),
            () => { new Node().AddValue("", block); serializer.WriteToBinaryBuffer(new Host()); },
        };
        foreach (Action call in calls)
        {
            long most = 0;
            for (int i = 0; i < 300; ++i, most = Math.Max(most, vok_live_bytes())) call();
            Check(most < 64L << 20, "garbage of " + most + " bytes, " + Array.IndexOf(calls, call));
        }
        host.OnWrite = node => { for (int i = 0; i < 20; ++i) node.AddValue("block", block); };
        byte[] bytes = serializer.WriteToBinaryBuffer(host);
        // Large roots: whoever disposes of them, only those that the host keeps stay, and nobody
        // has to look at all of the managed memory for that.
        Node kept = null;
        Action<Node>[] readers = { node => node.Dispose(), node => { }, node => kept = node };
        for (int n = 0; n < 3; ++n)
        {
            host.OnRead = readers[n];
            serializer.ReadFromBinaryBuffer(host, bytes);
            int collections = GC.CollectionCount(GC.MaxGeneration);
            for (int i = 0; i < 10; ++i)
            {
                serializer.ReadFromBinaryBuffer(host, bytes);
                if (n < 2) Check(vok_live_bytes() < 20L << 20, "a root stayed, case " + n);
                else kept.Dispose();
            }
            // The one that is kept makes it worth looking, once.
            collections = GC.CollectionCount(GC.MaxGeneration) - collections;
            Check(collections <= n / 2, collections + " needless collections, case " + n);
        }
        serializer.ReadFromBinaryBuffer(host, bytes);
        serializer.WriteToBinaryBuffer(host);
        Equal(kept.GetSubnodeCount("block"), 20, "a large root that is kept");
        kept.Dispose();
    }

    private static void TestMemory(int count)
    {
        var serializer = new Serializer();
        int id;
        var host = new Host {
            OnWrite = node => { node.AddValue("id", 1); node.AddSubnode("left to the collector"); },
            OnRead = node => Check(node.TryGetValue("id", out id), "id")
        };
        // The second half of the calls must not need more than the first one did; large documents
        // before have left less than they took together.
        var peaks = new long[2];
        for (int i = 0; i < count; ++i)
        {
            serializer.ReadFromBinaryBuffer(host, serializer.WriteToBinaryBuffer(host));
            if (i % 1000 != 0) continue;
            long now = Process.GetCurrentProcess().WorkingSet64;
            peaks[2L * i / count] = Math.Max(peaks[2L * i / count], now);
        }
        Console.WriteLine("{0} objects written and read, {1} KB", count, peaks.Max() >> 10);
        Check(peaks[0] > 0 && peaks[1] < peaks[0] * 5 / 4 && peaks[1] < 300L << 20,
              "memory has grown from " + peaks[0] + " to " + peaks[1]);
    }

    private static void TestThreads()
    {
        var threads = Enumerable.Range(0, 4).Select(n => new Thread(() => {
            var serializer = new Serializer();
            var host = new Host { OnWrite = Fill, OnRead = Verify };
            for (int i = 0; i < 200; ++i)
            {
                Equal(Raised(() => serializer.ReadFromBinaryBuffer(host, new byte[n])).Message,
                      "Failed to read data from file.", "thread's own error");
                serializer.ReadFromBinaryBuffer(host, serializer.WriteToBinaryBuffer(host));
            }
        })).ToList();
        threads.ForEach(t => t.Start());
        threads.ForEach(t => t.Join());
    }

    private static int Main(string[] args)
    {
        string folder = args.Length > 0 ? args[0] : Path.GetTempPath();
        TestSurface();
        TestRoundTrips(folder);
        TestStreams();
        TestFailures(folder);
        TestLifetime();
        TestGarbage();
        TestThreads();
        TestMemory(args.Length > 1 ? Int32.Parse(args[1]) : 1000000);
        Console.WriteLine(s_iWrong == 0 ? "good" : s_iWrong + " wrong");
        return s_iWrong == 0 ? 0 : 1;
    }
}
