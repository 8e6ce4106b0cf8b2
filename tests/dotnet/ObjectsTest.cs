// SPDX-License-Identifier: MIT
// Objects by their properties. Prints what is wrong; the exit status tells whether anything is.
//
//     ObjectsTest FOLDER    writes cs_*; compares cpp_* with them where objects_partner has been there
using System;
using System.Collections.Generic;
using System.Collections.ObjectModel;
using System.Globalization;
using System.IO;
using System.Linq;
using System.Threading;
using Velmar.Q7R.Serializer;
using Velmar.Q7R.Serializer.Objects;

internal sealed class Host : ISerialisable
{
    internal Action<Node> OnWrite = node => { };
    public void WriteValues(Node node) { OnWrite(node); }
    public void ReadValues(Node node) { }
}

public class Small
{
    public byte Tiny { get; set; }
    public ulong Big { get; set; }
    public float Real { get; set; }
    public double Wide { get; set; }
    public bool Flag { get; set; }
    public Side Side { get; set; }
    [WholeSeconds]
    public DateTime Day { get; set; }
    public DateTime At { get; set; }
    public decimal Price { get; set; }
    public Guid Guid { get; set; }
    public DateTimeOffset Local { get; set; }
    public HashSet<int> Set { get; set; }
    public Dictionary<string, int> Map { get; set; }
    public List<Leg> Legs { get; set; }
    public Shape Shape { get; set; }
    public byte[] Bytes { get; set; }
    [Field(Was = "Former")]
    public List<int> Now { get; set; }
    [NodeAttribute]
    public sbyte Attribute { get; set; }
}

public class Omitting
{
    [OmitEmpty]
    public string Text { get; set; }
    [OmitEmpty]
    public double Real { get; set; }
    [OmitEmpty]
    public List<int> List { get; set; }
    [OmitEmpty]
    public decimal Price { get; set; }
    [OmitEmpty, NodeAttribute]
    public int Attribute { get; set; }
}

public class Styled
{
    [Fields(Style = NameStyle.CamelCase)]
    public class Names
    {
        public int OrderId { get; set; }
        public int IOPort { get; set; }
        public int ID { get; set; }
        public int A { get; set; }
    }
}

public class Chain
{
    public Chain Next { get; set; }
}

public class ReadOnly
{
    public IReadOnlyList<int> List { get; set; }
    public IReadOnlyDictionary<string, int> Map { get; set; }
    public ISet<string> Set { get; set; }
    public ICollection<int> Some { get; set; }
}

public class Half : Basis
{
    public override bool Flag { get { return true; } }
    private Half() { }
    public static Half New() { return new Half(); }
}
public class Self : List<Self> { }
public class NoFields { public int Field; }
public class With<T> { public T Value { get; set; } }
public class Twice
{
    [Field("a")]
    public int One { get; set; }
    [Field("a")]
    public int Two { get; set; }
}
public class NoConstructor
{
    public int Value { get; set; }
    public NoConstructor(int value) { Value = value; }
}
public class Throwing
{
    public int Value { get { throw new InvalidOperationException("mine"); } set { } }
}

internal static class ObjectsTest
{
    private static int s_iWrong;
    private static readonly ObjectSerializer s_serializer = new ObjectSerializer();
    private static readonly ReadOptions s_strict = new ReadOptions { RefuseUnknown = true };

    private static void Equal(object actual, object expected, string what)
    {
        if (Equals(actual, expected)) return;
        Interlocked.Increment(ref s_iWrong);
        Console.WriteLine("WRONG: " + what + ": " + (actual ?? "null") + " instead of " + (expected ?? "null"));
    }

    private static string Raised(Action body)
    {
        try { body(); }
        catch (ApplicationException e) { return e.Message; }
        catch (InvalidOperationException e) { return "passed: " + e.Message; }
        return "(nothing raised)";
    }

    private static byte[] Document(Action<Node> write)
    {
        return new Serializer().WriteToBinaryBuffer(new Host { OnWrite = write });
    }

    // ---- documents --------------------------------------------------------------

    private static void TestDocuments(string folder)
    {
        foreach (var one in new Dictionary<string, Order> { { "full", Order.Full() }, { "empty", new Order() } })
        {
            string stem = Path.Combine(folder, "cs_" + one.Key);
            byte[] bytes = s_serializer.Write(one.Value);
            File.WriteAllBytes(stem + ".dgraph", bytes);
            File.WriteAllBytes(stem + ".dgraph12", s_serializer.WriteToBinaryBuffer(one.Value));
            s_serializer.WriteToFile(one.Value, stem + ".xml");
            foreach (string end in new[] { ".dgraph", ".dgraph12", ".xml" })
            {
                string partner = Path.Combine(folder, "cpp_" + one.Key) + end;
                if (!File.Exists(partner)) partner = stem + end;
                byte[] document = File.ReadAllBytes(partner);
                Equal(Convert.ToBase64String(File.ReadAllBytes(stem + end)), Convert.ToBase64String(document),
                      stem + end);
                Order read = end == ".xml" ? s_serializer.ReadFromFile<Order>(partner, s_strict)
                                           : s_serializer.Read<Order>(document, s_strict);
                Equal(Convert.ToBase64String(s_serializer.Write(read)), Convert.ToBase64String(bytes),
                      partner + " read");
            }
        }
        Order order = s_serializer.Read<Order>(s_serializer.Write(Order.Full()));
        Equal(order.Exact.Kind, DateTimeKind.Utc, "kind of a time");
        Equal(order.Placed, new DateTime(1969, 12, 31, 23, 59, 59), "a time before 1970");
        Equal(order.Child.VersionRead, 3, "version");
        Equal(order.Local.Offset, new TimeSpan(5, 30, 0), "offset");
        Equal(order.Price.ToString(CultureInfo.InvariantCulture), "-1234567890.50", "digits");
        Equal(order.Names.Comparer, StringComparer.Ordinal, "the comparer of a set that was there");
        Equal(BitConverter.DoubleToInt64Bits(order.D), BitConverter.DoubleToInt64Bits(-0.0), "minus zero");
        Equal(order.Texts.ElementAt(1), null, "null in a list");
        Equal(s_serializer.Read<Order>(s_serializer.Write(new Order())).Text, null, "no text");
    }

    private static void TestStreams()
    {
        foreach (StreamForm form in new[] { StreamForm.DGraph, StreamForm.Xml | StreamForm.Gzip })
        {
            var stream = new MemoryStream();
            s_serializer.WriteToStream(Order.Full(), stream, form);
            stream.Position = 0;
            var read = s_serializer.ReadFromStream<Order>(stream, s_strict);
            Equal(Convert.ToBase64String(s_serializer.Write(read)),
                  Convert.ToBase64String(s_serializer.Write(Order.Full())), "a stream");
        }
        // Below any node, as hosts write it by hand.
        byte[] bytes = new Serializer().WriteToBinaryBuffer(new Serialisable<Leg>(new Leg(2, 0.5)));
        Equal(Convert.ToBase64String(bytes), Convert.ToBase64String(Document(node => {
            node.AddValue("ratio", 2);
            node.AddValue("strike", 0.5);
        })), "by hand");
        var leg = new Serialisable<Leg>(default(Leg));
        new Serializer().ReadFromBinaryBuffer(leg, bytes);
        Equal(leg.Value.Strike, 0.5, "Serialisable");
        leg.ReadValues(new Node());
        Equal(leg.Value.Strike, 0.5, "a node of no tree");
        Equal(((Circle)s_serializer.Read<Shape>(s_serializer.Write<Shape>(new Circle { Radius = 2 }))).Radius, 2.0,
              "kinds at the root");
    }

    // ---- reading ----------------------------------------------------------------

    private static void TestFaults()
    {
        var cases = new Dictionary<string, Action<Node>> {
            { "/Tiny: a number from 0 to 255 expected, Integer 256 found, byte 46", n => n.AddValue("Tiny", 256) },
            { "/Tiny: Integer expected, String found, byte 46", n => n.AddValue("Tiny", "1") },
            { "/Big: a number from 0 to 18446744073709551615 expected, Integer -1 found, byte 46", n => n.AddValue("Big", -1) },
            { "/Big: Long expected, String found, byte 46", n => n.AddValue("Big", "1x") },
            { "/Real: a number that a Float holds expected, Double 0.1 found, byte 46", n => n.AddValue("Real", 0.1) },
            { "/Wide: Double expected, Boolean found, byte 46", n => n.AddValue("Wide", true) },
            { "/Flag: Boolean expected, Integer 1 found, byte 46", n => n.AddValue("Flag", 1) },
            { "/Side: one of Buy, Sell expected, String found, byte 46", n => n.AddValue("Side", "buy") },
            { "/Day: Date expected, Double 1 found, byte 46", n => n.AddValue("Day", 1.0) },
            { "/At: a time of the years 1 to 9999 expected, String found, byte 46",
              n => n.AddValue("At", "9223372036854775807") },
            { "/Price: a decimal number expected, String found, byte 46",
              n => n.AddValue("Price", "0.12345678901234567890123456789") },
            { "/Guid: a GUID expected, String found, byte 46", n => n.AddValue("Guid", "x") },
            { "/Local: a time with its offset expected, String found, byte 46", n => n.AddValue("Local", "2026-01-01") },
            { "/Set[1]: the same as one before, byte 61",
              n => { n.AddValue("Set", 1); n.AddValue("Set", 1); } },
            { "/Map: Tree expected, Integer 1 found, byte 46", n => n.AddValue("Map", 1) },
            { "/Map: a key expected, byte 46",
              n => { using (Node e = n.AddSubnode("Map")) e.AddValue("value", 1); } },
            { "/Legs[1]/strike: Double expected, String found, byte 78", n => {
                n.AddSubnode("Legs").Dispose();
                using (Node e = n.AddSubnode("Legs")) e.AddValue("strike", "");
            } },
            { "/Shape: none of the kinds that are known here, byte 46", n => n.AddSubnode("Shape").Dispose() },
            { "/Bytes: Binary expected, String found, byte 46", n => n.AddValue("Bytes", "") },
            { "/Unknown: unknown field, byte 46", n => n.AddValue("Unknown", 1) },
            { "/Tiny[1]: unknown field, byte 62", n => { n.AddValue("Tiny", 1); n.AddValue("Tiny", 1); } }
        };
        foreach (var one in cases)
        {
            byte[] document = Document(one.Value);
            Equal(Raised(() => s_serializer.Read<Small>(document, s_strict)), one.Key, "fault");
        }
        Equal(Raised(() => s_serializer.Read<Small>(new byte[3])), "Failed to read data from file.", "no document");
        Equal(Raised(() => s_serializer.Read<Small>(null)), "Failed to read data from file.", "null");
    }

    private static void TestXmlFaults(string folder)
    {
        string path = Path.Combine(folder, "fault.xml");
        foreach (var one in new Dictionary<string, string> {
            { "<Legs>\n<strike Type=\"Boolean\">true</strike></Legs>", "/Legs[0]/strike: Double expected, " },
            { "\n<Tiny Attribute=\"5\"/>", "/Tiny: Integer expected, " } })
        {
            File.WriteAllText(path, "<Root>" + one.Key + "</Root>");
            string message = Raised(() => s_serializer.ReadFromFile<Small>(path));
            Equal(message.StartsWith(one.Value, StringComparison.Ordinal) &&
                  message.EndsWith(", line 2", StringComparison.Ordinal), true, message);
        }
        File.WriteAllText(path, "<Root Attribute=\"200\"/>");
        Equal(Raised(() => s_serializer.ReadFromFile<Small>(path)),
              "/: attribute \"Attribute\" has the value \"200\", which does not fit, line 1", "an attribute");
        File.WriteAllText(path, "<Root Attribute=\"-128\"/>");
        Equal(s_serializer.ReadFromFile<Small>(path).Attribute, (sbyte)-128, "an attribute");
    }

    // Each byte another one: a document that is read or refused, and nothing else.
    private static void TestDamaged()
    {
        byte[] document = s_serializer.Write(Order.Full());
        int read = 0, refused = 0;
        foreach (int change in new[] { 1, 8, 0xFF })
        {
            for (int i = 0; i < document.Length; ++i)
            {
                document[i] ^= (byte)change;
                try
                {
                    s_serializer.Read<Order>(document, i % 2 == 0 ? s_strict : null);
                    ++read;
                }
                catch (ApplicationException)
                {
                    ++refused;
                }
                document[i] ^= (byte)change;
            }
        }
        Equal(read > 0 && refused > read, true, "damaged documents, " + read + " read, " + refused + " refused");
    }

    private static void TestConversions()
    {
        var small = s_serializer.Read<Small>(Document(n => {
            n.AddValue("Big", "18446744073709551615");  // as documents of version 1.2 have a Long
            n.AddValue("Real", 3);
            n.AddValue("Wide", 3);
            n.AddValue("Former", 1);
            n.AddValue("Former", 2);
            n.AddValue("Other", 2);
        }));
        Equal(small.Big, ulong.MaxValue, "a Long as a text");
        Equal(small.Real, 3f, "a Float of an Integer");
        Equal(small.Wide, 3.0, "a Double of an Integer");
        Equal(string.Join(" ", small.Now), "1 2", "a former name");
        small = s_serializer.Read<Small>(Document(n => { n.AddValue("Former", 1); n.AddValue("Now", 5); }));
        Equal(string.Join(" ", small.Now), "5", "both names");

        // What is not there stays, but for what is written as no node.
        var order = Order.Full();
        order.Names.Add("z");
        s_serializer.ReadInto(order, Document(n => n.AddValue("i4", 5)));
        Equal(order.I4, 5, "what is there");
        Equal(order.I8, long.MinValue, "a number");
        Equal(order.Leg.Ratio, 2, "a structure");
        Equal(order.Text ?? order.Child ?? order.Shape ?? (object)order.Limit, null, "nothing");
        Equal(order.Legs.Count + order.Numbers.Length + order.Names.Count, 0, "collections");
        Equal(order.Zero, 0, "an omitted one");

        var omitting = new Omitting { Text = "", List = new List<int>() };
        Equal(s_serializer.Write(omitting).Length, Document(n => { }).Length, "omitted");
        var read = s_serializer.Read<Omitting>(s_serializer.Write(omitting));
        Equal(read.Text, "", "an omitted text");
        read = s_serializer.Read<Omitting>(s_serializer.Write(
            new Omitting { Text = "t", Real = -0.0, List = new List<int> { 0 }, Price = 0.0m, Attribute = 4 }));
        Equal(read.Text + read.List.Count + read.Attribute + read.Price.ToString(CultureInfo.InvariantCulture), "t140.0",
              "not omitted");
        var interfaces = s_serializer.Read<ReadOnly>(s_serializer.Write(new ReadOnly {
            List = new[] { 1, 2 }, Map = new SortedDictionary<string, int> { { "a", 3 } },
            Set = new SortedSet<string> { "b" }, Some = new Collection<int> { 4 } }));
        Equal(interfaces.List.Sum() + interfaces.Map["a"] + interfaces.Some.Count + interfaces.Set.Single(), "7b",
              "interfaces of collections");
        Equal(Convert.ToBase64String(s_serializer.Write(s_serializer.Read<Half>(s_serializer.Write(Half.New())))),
              Convert.ToBase64String(Document(n => { n.AddValue("flag", true); n.AddValue("i1", 0); })),
              "half an override, a private constructor");
        byte[] names = s_serializer.Write(new Styled.Names { OrderId = 1, IOPort = 2, ID = 3, A = 4 });
        Equal(Convert.ToBase64String(names), Convert.ToBase64String(Document(n => {
            n.AddValue("orderId", 1);
            n.AddValue("ioPort", 2);
            n.AddValue("id", 3);
            n.AddValue("a", 4);
        })), "styles");
    }

    // ---- writing ----------------------------------------------------------------

    private static void TestRefused()
    {
        var unlisted = new Order { Shapes = new Shape[] { new Circle(), new Unlisted() } };
        Equal(Raised(() => s_serializer.Write(unlisted)),
              "/shapes[1]: a type that is not among the kinds of its base", "an unlisted kind");
        Equal(Raised(() => s_serializer.Write(new Order { Side = (Side)9 })), "/side: a value without a name", "an enumeration");
        Equal(Raised(() => s_serializer.Write(new Order { Text = "a\0b" })),
              "/text: a text ends at its first NUL: use bytes", "a NUL");
        Equal(Raised(() => s_serializer.Write(new Throwing())), "passed: mine", "an exception of the object");
        Equal(s_serializer.Read<With<string>>(s_serializer.Write(new With<string> { Value = "\uD800x" })).Value, "\uFFFDx",
              "half a pair");

        Chain deep = null, cycle = new Chain();
        for (int i = 0; i < 257; ++i) deep = new Chain { Next = deep };  // 256 levels below the root
        byte[] bytes = s_serializer.Write(deep);
        int levels = 0;
        for (Chain c = s_serializer.Read<Chain>(bytes); c != null; c = c.Next) ++levels;
        Equal(levels, 257, "levels");
        deep = new Chain { Next = deep };
        cycle.Next = cycle;
        foreach (Chain one in new[] { deep, cycle })
        {
            string message = Raised(() => s_serializer.Write(one));
            Equal(message.EndsWith("/Next: nested too deeply", StringComparison.Ordinal), true, message);
        }
        byte[] foreign = Document(root => {
            Node at = root;
            for (int i = 0; i < 100000; ++i) at = at.AddSubnode("Next");
        });
        Equal(Raised(() => s_serializer.Read<Chain>(foreign)).Contains("Next: nested too deeply, byte "), true, "a deep document");
    }

    private static void TestTypes()
    {
        foreach (var one in new Dictionary<string, Action> {
            { "NoFields: a type without fields", () => s_serializer.Write(new NoFields()) },
            { "With`1[[System.Char", () => s_serializer.Write(new With<char>()) },
            { "With`1[[System.Object", () => s_serializer.Write(new With<object>()) },
            { "With`1[[System.Uri", () => s_serializer.Write(new With<Uri>()) },
            { "With`1[[System.Collections.Generic.List`1[[System.Byte", () => s_serializer.Write(new With<List<byte>>()) },
            { "With`1[[System.Int32[,]", () => s_serializer.Write(new With<int[,]>()) },
            { "With`1[[Self", () => s_serializer.Write(new With<Self>()) },
            { "With`1[[System.Collections.Generic.Queue", () => s_serializer.Write(new With<Queue<int>>()) },
            { "With`1[[System.IDisposable", () => s_serializer.Write(new With<IDisposable>()) },
            { "System.Int32: no object with fields", () => s_serializer.Write(5) },
            { "System.Int32[]: no object with fields", () => s_serializer.Write(new int[1]) },
            { "Twice: two fields have the name \"a\"", () => s_serializer.Write(new Twice()) },
            { "Shape: what has kinds", () => s_serializer.ReadInto<Shape>(new Circle(), null) },
            { "NoConstructor: reading needs a constructor without parameters",
              () => s_serializer.Read<NoConstructor>(s_serializer.Write(new NoConstructor(1))) } })
        {
            string message = Raised(one.Value);
            Equal(message.StartsWith(one.Key, StringComparison.Ordinal), true, message);
        }
    }

    // Types that are met by several threads at once, and documents within documents.
    private static void TestThreads()
    {
        string expected = Convert.ToBase64String(s_serializer.Write(Order.Full()));
        var threads = new Thread[4];
        for (int i = 0; i < threads.Length; ++i)
        {
            threads[i] = new Thread(() => {
                for (int n = 0; n < 50; ++n)
                {
                    var with = new With<With<Order>> { Value = new With<Order> { Value = Order.Full() } };
                    var read = s_serializer.Read<With<With<Order>>>(s_serializer.Write(with));
                    Equal(Convert.ToBase64String(s_serializer.Write(read.Value.Value)), expected, "in a thread");
                }
            });
            threads[i].Start();
        }
        foreach (Thread thread in threads) thread.Join();
    }

    private static int Main(string[] args)
    {
        // Nothing may depend on it.
        Thread.CurrentThread.CurrentCulture = new CultureInfo("de-DE");
        TestThreads();
        TestDocuments(args[0]);
        TestStreams();
        TestFaults();
        TestXmlFaults(args[0]);
        TestDamaged();
        TestConversions();
        TestRefused();
        TestTypes();
        Console.WriteLine(s_iWrong == 0 ? "good" : s_iWrong + " wrong");
        return s_iWrong == 0 ? 0 : 1;
    }
}
