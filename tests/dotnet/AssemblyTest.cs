// The assembly as a host sees it. Prints what is wrong; the exit status counts it.
using System;
using System.Collections.Generic;
using System.IO;
using System.Linq;
using System.Reflection;
using System.Runtime.InteropServices;
using System.Runtime.Serialization;
using System.Text;
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

    private static void Equal<T>(T actual, T expected, string what)
    {
        Check(EqualityComparer<T>.Default.Equals(actual, expected),
              what + ": " + actual + " instead of " + expected);
    }

    private static ApplicationException Raised(Action body)
    {
        try { body(); }
        catch (ApplicationException e) { return e; }
        return new ApplicationException("(nothing raised)");
    }

    private static string Failure(Action body)
    {
        return Raised(body).Message;
    }

    // ---- the public surface -------------------------------------------------

    private static string Show(Type type)
    {
        return type.IsByRef ? "out " + type.GetElementType().Name : type.Name;
    }

    private static string Show(MethodBase method)
    {
        string access = method.IsPublic ? "public" : method.IsFamily ? "protected" : "internal";
        var info = method as MethodInfo;
        string parameters = String.Join(", ", method.GetParameters().Select(p => {
            Check(p.ParameterType.IsByRef == p.IsOut, "out of " + method + " " + p.Name);
            return Show(p.ParameterType);
        }));
        return access + (method.IsStatic ? " static" : "") +
               (method.IsVirtual && !method.IsFinal ? " virtual" : "") +
               (info != null ? " " + info.ReturnType.Name : "") + " " + method.Name + "(" +
               parameters + ")";
    }

    private static void SurfaceIs(Type type, params string[] expected)
    {
        const BindingFlags all = BindingFlags.Public | BindingFlags.NonPublic | BindingFlags.Instance |
                                 BindingFlags.Static | BindingFlags.DeclaredOnly;
        string[] actual = type.GetMembers(all)
            .OfType<MethodBase>()
            .Where(m => !m.IsPrivate)
            .Select(Show)
            .OrderBy(s => s, StringComparer.Ordinal)
            .ToArray();
        string[] sorted = expected.OrderBy(s => s, StringComparer.Ordinal).ToArray();
        foreach (string s in actual.Except(sorted)) Check(false, type.Name + " has " + s);
        foreach (string s in sorted.Except(actual)) Check(false, type.Name + " lacks " + s);
    }

    private static void TestSurface()
    {
        Assembly assembly = typeof(Node).Assembly;
        Equal(assembly.GetName().Name, "Velmar.Q7R.Serializer", "name");
        Equal(String.Join(" ", assembly.GetExportedTypes().Select(t => t.Name).OrderBy(s => s)),
              "ISerialisable Node Serializer", "types");
        Check(!typeof(Node).IsSealed && typeof(Node).BaseType == typeof(object), "Node's base");
        Equal(typeof(Node).GetInterfaces().Single(), typeof(IDisposable), "Node's interfaces");
        Equal(typeof(Serializer).GetInterfaces().Single(), typeof(IDisposable),
              "Serializer's interfaces");
        var node = new List<string> {
            "public .ctor()", "internal .ctor(Boolean)", "internal .ctor(IntPtr)",
            "public Void Dispose()", "protected virtual Void Dispose(Boolean)",
            "protected virtual Void Finalize()", "internal static IntPtr op_Explicit(Node)",
            "internal NodeHandle get_Handle()",
            "public Node AddSubnode(String)", "public Int32 GetSubnodeCount(String)",
            "public Boolean TryGetSubnode(String, Int32, out Node)",
            "public Boolean TryGetSubnode(String, out Node)",
        };
        foreach (string s in new[] { "String", "Int32", "Double", "Boolean", "Byte[]" })
        {
            node.Add("public Void AddValue(String, " + s + ")");
            node.Add("public Boolean TryGetValue(String, Int32, out " + s + ")");
            node.Add("public Boolean TryGetValue(String, out " + s + ")");
        }
        const string four = "out Int32, out Int32, out Int32, out Int32)";
        node.Add("public Void AddValue(String, Int32, Int32, Int32, Int32)");
        node.Add("public Boolean TryGetValue(String, Int32, " + four);
        node.Add("public Boolean TryGetValue(String, " + four);
        SurfaceIs(typeof(Node), node.ToArray());
        SurfaceIs(typeof(Serializer), "public .ctor()", "public Void Dispose()",
                  "protected virtual Void Dispose(Boolean)",
                  "public Void WriteToFile(ISerialisable, String)",
                  "public Byte[] WriteToBinaryBuffer(ISerialisable)",
                  "public Void ReadFromFile(ISerialisable, String)",
                  "public Void ReadFromBinaryBuffer(ISerialisable, Byte[])");
        const BindingFlags all = BindingFlags.Public | BindingFlags.NonPublic | BindingFlags.Instance |
                                 BindingFlags.Static | BindingFlags.DeclaredOnly;
        Equal(typeof(Node).GetFields(all).Single().FieldType.BaseType, typeof(SafeHandle), "Node's field");
        Equal(typeof(Serializer).GetFields(all).Length, 0, "Serializer's fields");
        Equal(typeof(Serializer).BaseType, typeof(object), "Serializer's base");
        Check(typeof(Node).GetMethod("op_Explicit", all).IsSpecialName, "the conversion");
        SurfaceIs(typeof(ISerialisable), "public virtual Void WriteValues(Node)",
                  "public virtual Void ReadValues(Node)");
    }

    // Hosts may name their arguments, so the names are part of the surface.
    private static void TestParameterNames()
    {
        var names = new HashSet<string>();
        foreach (Type type in new[] { typeof(Node), typeof(Serializer), typeof(ISerialisable) })
        {
            foreach (MethodInfo m in type.GetMethods().Where(m => m.DeclaringType == type))
                names.Add(m.Name + "(" + String.Join(", ", m.GetParameters().Select(p => p.Name)) + ")");
        }
        string[] expected = {
            "AddSubnode(name)", "AddValue(name, v1, v2, v3, v4)", "AddValue(name, value)", "Dispose()",
            "GetSubnodeCount(name)", "ReadFromBinaryBuffer(iSerialisable, byteArray)",
            "ReadFromFile(iSerialisable, fileName)", "ReadValues(node)",
            "TryGetSubnode(name, index, node)", "TryGetSubnode(name, node)",
            "TryGetValue(name, index, v1, v2, v3, v4)", "TryGetValue(name, index, value)",
            "TryGetValue(name, v1, v2, v3, v4)", "TryGetValue(name, value)",
            "WriteToBinaryBuffer(iSerialisable)", "WriteToFile(iSerialisable, fileName)",
            "WriteValues(node)",
        };
        Equal(String.Join("\n", names.OrderBy(s => s, StringComparer.Ordinal)),
              String.Join("\n", expected), "parameter names");
    }

    // ---- round trips --------------------------------------------------------

    private static void Fill(Node node)
    {
        node.AddValue("s", "a\u00E4\uD83D\uDE00<]]>\r\n");
        node.AddValue("s", (string)null);
        node.AddValue(null, "no name");
        node.AddValue("i", -7);
        node.AddValue("d", 0.1);
        node.AddValue("b", true);
        node.AddValue("raw", new byte[] { 0, 1, 255 });
        node.AddValue("raw", (byte[])null);
        node.AddValue("q", 1, 2, 3, 4);
        using (Node sub = node.AddSubnode("sub"))
        {
            sub.AddValue("V1", 10);
            sub.AddValue("V3", 30);
        }
    }

    private static void Verify(Node node)
    {
        string s;
        int a, b, c, d;
        double real;
        bool flag;
        byte[] raw;
        Node sub;
        Check(node.TryGetValue("s", out s) && s == "a\u00E4\uD83D\uDE00<]]>\r\n", "string");
        Check(node.TryGetValue("s", 1, out s) && s == String.Empty, "null string");
        Check(node.TryGetValue(null, out s) && s == "no name", "no name");
        Check(node.TryGetValue("i", out a) && a == -7, "int");
        Check(node.TryGetValue("d", out real) && real == 0.1, "double");
        Check(node.TryGetValue("b", out flag) && flag, "bool");
        Check(node.TryGetValue("raw", out raw) && raw.SequenceEqual(new byte[] { 0, 1, 255 }), "bytes");
        Check(node.TryGetValue("raw", 1, out raw) && raw.Length == 0, "no bytes");
        Check(node.TryGetValue("q", out a, out b, out c, out d) && a + 10 * b + 100 * c + 1000 * d == 4321, "ints");
        Equal(node.GetSubnodeCount("s"), 2, "count");
        Equal(node.GetSubnodeCount("none"), 0, "count of none");
        Check(node.TryGetSubnode("sub", out sub), "subnode");
        using (sub) Check(sub.TryGetValue("V3", out a) && a == 30, "in subnode");
        // What is not there leaves outputs alone.
        a = 77;
        Check(!node.TryGetValue("none", out a) && a == 77, "untouched int");
        s = "old";
        Check(!node.TryGetValue("s", 2, out s) && s == "old", "untouched string");
        a = b = c = d = 5;
        Check(!node.TryGetValue("sub", out a, out b, out c, out d), "some of four");
        Check(a == 10 && b == 5 && c == 30 && d == 5, "the others of four");
        // Another type.
        Equal(Failure(() => { int i; node.TryGetValue("s", out i); }),
              "Failed to get Node int value", "wrong type");
        Equal(Failure(() => { byte[] x; node.TryGetValue("i", out x); }),
              "Failed to get Node byte array", "wrong type");
        string text = Failure(() => { string x; node.TryGetValue("i", out x); });
        Check(text.StartsWith("node \"i\" with wrong data type: 'String' expected but got 'Integer'") &&
              text.Contains("vok::Data::"), "native text: " + text);
    }

    // The second of a name, and what is left of a variable where there is no third one.
    private static void TestIndexes()
    {
        var node = new Node();
        for (int i = 0; i < 2; ++i)
        {
            node.AddValue("s", "s" + i);
            node.AddValue("i", i + 1);
            node.AddValue("d", i + 0.5);
            node.AddValue("b", i == 1);
            node.AddValue("raw", new[] { (byte)i });
            node.AddValue("q", i, i, i, i + 1);
            node.AddSubnode("sub").AddValue("i", i + 1);
        }
        for (int i = 1; i < 3; ++i)
        {
            string s = "s1";
            int number = 2, v1 = 1, v2 = 1, v3 = 1, v4 = 2;
            double real = 1.5;
            bool flag = true;
            byte[] old = { 1 }, raw = old;
            var kept = new Node();
            Node sub = kept;
            Equal(node.TryGetValue("s", i, out s), i == 1, "string " + i);
            Equal(node.TryGetValue("i", i, out number), i == 1, "int " + i);
            Equal(node.TryGetValue("d", i, out real), i == 1, "double " + i);
            Equal(node.TryGetValue("b", i, out flag), i == 1, "bool " + i);
            Equal(node.TryGetValue("raw", i, out raw), i == 1, "bytes " + i);
            Equal(node.TryGetValue("q", i, out v1, out v2, out v3, out v4), i == 1, "ints " + i);
            Equal(node.TryGetSubnode("sub", i, out sub), i == 1, "subnode " + i);
            Check(s == "s1" && number == 2 && real == 1.5 && flag && v1 + v2 + v3 + v4 == 5 &&
                  raw[0] == 1, "values at " + i);
            Check(i == 1 ? raw != old : raw == old && sub == kept, "what is kept at " + i);
            if (i == 1) Check(sub.TryGetValue("i", out number) && number == 2, "in the second subnode");
        }
    }

    private static void TestRoundTrips(string folder)
    {
        var serializer = new Serializer();
        int calls = 0;
        var host = new Host { OnWrite = Fill, OnRead = node => { Verify(node); ++calls; } };
        byte[] bytes = serializer.WriteToBinaryBuffer(host);
        serializer.ReadFromBinaryBuffer(host, bytes);
        string file = Path.Combine(folder, "\u00E4.xml");
        serializer.WriteToFile(host, file);
        serializer.ReadFromFile(host, file);
        Equal(calls, 2, "reads");
        Check(serializer.WriteToBinaryBuffer(host).SequenceEqual(bytes), "same bytes again");
        serializer.Dispose();
    }

    // Those that the C++ facade writes, too.
    private static void TestBytes()
    {
        var host = new Host { OnWrite = node => {
            node.AddValue("name", "\u00E4");
            node.AddValue("id", 258);
            node.AddValue("on", true);
            node.AddValue("raw", new byte[] { 1, 2 });
            node.AddValue("p", 1, 2, 3, 4);
        } };
        byte[] bytes = new Serializer().WriteToBinaryBuffer(host);
        const string expected = "DGraphBin\x01\x02\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0" +
            "\a\0\0\0Root[0]\0\x05\0\0\0" + "\x05\0\0\0id[0]\x01\x02\x01\0\0" +
            "\a\0\0\0name[0]\x05\x03\0\0\0\u00C3\u00A4\0" + "\x05\0\0\0on[0]\x06\x01" +
            "\x04\0\0\0p[0]\0\x04\0\0\0" + "\x05\0\0\0V1[0]\x01\x01\0\0\0" +
            "\x05\0\0\0V2[0]\x01\x02\0\0\0" + "\x05\0\0\0V3[0]\x01\x03\0\0\0" +
            "\x05\0\0\0V4[0]\x01\x04\0\0\0" + "\x06\0\0\0raw[0]\b\x02\0\0\0\x01\x02";
        Equal(Encoding.GetEncoding(28591).GetString(bytes), expected, "bytes");
    }

    private static void TestFailures(string folder)
    {
        var serializer = new Serializer();
        var host = new Host { OnRead = node => Check(false, "read from nothing") };
        const string read = "Failed to read data from file.";
        Equal(Failure(() => serializer.ReadFromFile(host, Path.Combine(folder, "none"))), read, "no file");
        Equal(Failure(() => serializer.ReadFromFile(host, null)), read, "null file");
        // The reason, and the place.
        string bad = Path.Combine(folder, "bad.xml");
        File.WriteAllText(bad, "<a>\n  <b><c></d></b></a>");
        string reason = Raised(() => serializer.ReadFromFile(host, bad)).InnerException.Message;
        Check(reason.StartsWith("no XML stream or stream is corrupted\nat byte ") &&
              reason.Contains(", line 2, column ") && reason.Contains("vok::Data::LoadFromXML\n"),
              "reason: " + reason);
        Equal(Raised(() => new Node().TryGetValue("x", out bad)).InnerException, null, "no reason");
        Equal(Failure(() => serializer.ReadFromBinaryBuffer(host, new byte[8])), read, "short buffer");
        Equal(Failure(() => serializer.ReadFromBinaryBuffer(host, null)), read, "null buffer");
        Equal(Failure(() => serializer.WriteToFile(host, "")), "Failed to write data to file", "empty name");
        host.OnWrite = node => node.Dispose();
        Equal(Failure(() => serializer.WriteToFile(host, "x")), "Invalid vok::Data", "disposed root");
        Equal(Failure(() => serializer.WriteToBinaryBuffer(host)), "Invalid vok::Data", "disposed root");
        host.OnWrite = node => { throw new InvalidOperationException("mine"); };
        try { serializer.WriteToBinaryBuffer(host); Check(false, "host's exception"); }
        catch (InvalidOperationException e) { Equal(e.Message, "mine", "host's exception"); }
        // On a node that was disposed of.
        var gone = new Node();
        gone.AddValue("x", 1);
        gone.Dispose();
        gone.Dispose();
        string text = "old";
        int number = 7;
        double real;
        bool flag;
        byte[] raw;
        Node node2;
        var cases = new Dictionary<Action, string> {
            { () => gone.AddValue("x", "y"), "Failed to add Node String value" },
            { () => gone.AddValue("x", 1), "Failed to add Node int value" },
            { () => gone.AddValue("x", 1.5), "Failed to add Node double value" },
            { () => gone.AddValue("x", true), "Failed to add Node bool value" },
            { () => gone.AddValue("x", new byte[1]), "Failed to add Node byte array" },
            { () => gone.AddValue("x", 1, 2, 3, 4), "Failed to add Node quad tuple" },
            { () => gone.AddSubnode("x"), "Failed to add subnode" },
            { () => gone.TryGetValue("x", out text), "object points to nothing\n" },
            { () => gone.TryGetValue("x", out number), "Failed to get Node int value" },
            { () => gone.TryGetValue("x", out real), "Failed to get Node double value" },
            { () => gone.TryGetValue("x", out flag), "Failed to get Node bool value" },
            { () => gone.TryGetValue("x", out raw), "Failed to get Node byte array" },
            { () => gone.TryGetValue("x", out number, out number, out number, out number), "Failed to get Node int value" },
            { () => gone.TryGetSubnode("x", out node2), "Failed to get subnode" },
            { () => gone.GetSubnodeCount("x"), "Failed to get subnode count" },
        };
        foreach (KeyValuePair<Action, string> c in cases) Equal(Failure(c.Key), c.Value, "disposed");
        Check(text == "old" && number == 7, "outputs of a disposed node");
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
    private static void InPassing(Action body)
    {
        var thread = new Thread(() => body());
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
            Equal(root.GetSubnodeCount("n"), 20000, "subnodes");
            for (int i = 0; i < 20000; i += 99)
            {
                int value = -1;
                bool found = root.TryGetSubnode("n", i, out kept) && kept.TryGetValue("i", out value) &&
                             value == i;
                Check(found, "subnode " + i);
            }
            kept = null;
            for (int i = 0; i < 100; ++i)
            {
                try { new Unfinished(); }
                catch (InvalidOperationException) { }
                // No constructor at all: nothing to free.
                FormatterServices.GetUninitializedObject(typeof(Node));
                new Node().Dispose();
            }
            var host = new Host { OnRead = node => kept = node };
            var serializer = new Serializer();
            serializer.ReadFromBinaryBuffer(host, serializer.WriteToBinaryBuffer(new Host { OnWrite = Fill }));
        });
        // An object may keep its root, and the tree with it.
        Equal(kept.GetType(), typeof(Node), "type of a root");
        Verify(kept);
        kept.Dispose();
        GC.Collect();
        GC.WaitForPendingFinalizers();
        Equal(vok_live_nodes() - before, 0, "native nodes left");
        // Loading the library switched the lines for failures off; they can be switched on.
        Equal(vok_set_banner(1), 0, "banner");
        Equal(vok_set_banner(0), 1, "banner");
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
            () => serializer.WriteToFile(host, ""),
            () => new Node().AddValue("block", block),
        };
        for (int n = 0; n < 3; ++n)
        {
            long most = 0;
            for (int i = 0; i < 300; ++i)
            {
                Failure(calls[n]);
                if (n == 2) serializer.WriteToBinaryBuffer(new Host { OnWrite = node => { } });
                most = Math.Max(most, vok_live_bytes());
            }
            Check(most < 64L << 20, "garbage of " + most + " bytes, case " + n);
        }
        host.OnWrite = node => { for (int i = 0; i < 20; ++i) node.AddValue("block", block); };
        byte[] bytes = serializer.WriteToBinaryBuffer(host);
        // Large roots: whoever disposes of them, only those that the host keeps stay, and nobody has
        // to look at all of the managed memory for that.
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
                if (n == 2) kept.Dispose();
            }
            // The one that is kept makes it worth looking, once.
            collections = GC.CollectionCount(GC.MaxGeneration) - collections;
            Check(collections <= n / 2, collections + " needless collections, case " + n);
        }
        serializer.ReadFromBinaryBuffer(host, bytes);
        serializer.WriteToBinaryBuffer(new Host { OnWrite = node => node.AddValue("block", bytes) });
        Equal(kept.GetSubnodeCount("block"), 20, "a large root that is kept");
        kept.Dispose();
    }

    private static long ResidentBytes()
    {
        foreach (string line in File.ReadAllLines("/proc/self/status"))
        {
            if (line.StartsWith("VmRSS:")) return Int64.Parse(line.Substring(6).Replace("kB", "")) * 1024;
        }
        return 0;
    }

    private static void TestMemory(int count)
    {
        var serializer = new Serializer();
        var host = new Host {
            OnWrite = node => {
                node.AddValue("id", 1);
                node.AddValue("name", "text");
                node.AddSubnode("left to the collector");
            },
            OnRead = node => { int id; Check(node.TryGetValue("id", out id), "id"); }
        };
        // The second half of the calls must not need more than the first one did.
        var peaks = new long[2];
        for (int i = 0; i < count; ++i)
        {
            serializer.ReadFromBinaryBuffer(host, serializer.WriteToBinaryBuffer(host));
            int half = i < count / 2 ? 0 : 1;
            if (i % 1000 == 0) peaks[half] = Math.Max(peaks[half], ResidentBytes());
        }
        Console.WriteLine("{0} objects written and read, most memory {1} KB", count, peaks.Max() >> 10);
        Check(peaks[1] < peaks[0] + peaks[0] / 4, "memory has grown from " + peaks[0] + " to " + peaks[1]);
    }

    private static void TestThreads()
    {
        var threads = Enumerable.Range(0, 4).Select(n => new Thread(() => {
            var serializer = new Serializer();
            for (int i = 0; i < 200; ++i)
            {
                var host = new Host { OnWrite = Fill };
                byte[] bytes = serializer.WriteToBinaryBuffer(host);
                Equal(Failure(() => serializer.ReadFromBinaryBuffer(host, new byte[n])),
                      "Failed to read data from file.", "thread's own error");
                serializer.ReadFromBinaryBuffer(host, bytes);
            }
        })).ToList();
        threads.ForEach(t => t.Start());
        threads.ForEach(t => t.Join());
    }

    private static int Main(string[] args)
    {
        string folder = args.Length > 0 ? args[0] : Path.GetTempPath();
        int count = args.Length > 1 ? Int32.Parse(args[1]) : 1000000;
        TestSurface();
        TestParameterNames();
        TestIndexes();
        TestRoundTrips(folder);
        TestBytes();
        TestFailures(folder);
        TestLifetime();
        TestGarbage();
        TestThreads();
        TestMemory(count);
        Console.WriteLine(s_iWrong == 0 ? "good" : s_iWrong + " wrong");
        return s_iWrong == 0 ? 0 : 1;
    }
}
