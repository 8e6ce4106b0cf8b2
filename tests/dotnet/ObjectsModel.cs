// SPDX-License-Identifier: MIT
// Objects with fields of every kind; objects_partner.cpp has the same.
using System;
using System.Collections.Generic;
using Velmar.Q7R.Serializer;
using Velmar.Q7R.Serializer.Objects;

[ByName]
public enum Side : sbyte { Buy, Sell = 5 }
public enum Level : ushort { Low, High = 40000 }
public enum Huge : ulong { Low, High = 0xFFFFFFFFFFFFFFFF }

[Fields(Style = NameStyle.CamelCase)]
public struct Leg
{
    public int Ratio { get; set; }
    public double Strike { get; set; }
    public Leg(int ratio, double strike) : this()
    {
        Ratio = ratio;
        Strike = strike;
    }
}

[Kind("circle", typeof(Circle))]
[Kind(null, typeof(Square))]
public abstract class Shape
{
}
public class Circle : Shape
{
    [Field("radius")]
    public double Radius { get; set; }
}
[Fields(Style = NameStyle.CamelCase)]
public class Square : Shape
{
    public int Edge { get; set; }
    public string Name { get; set; }
}
public class Unlisted : Circle
{
}

public class Point : ISerialisable
{
    public int X;
    public void WriteValues(Node node) { node.AddValue("x", X); }
    public void ReadValues(Node node) { node.TryGetValue("x", out X); }
}

[Fields(Style = NameStyle.CamelCase)]
public class Attributes
{
    [NodeAttribute]
    public string Title { get; set; }
    [NodeAttribute]
    public int Count { get; set; }
    [NodeAttribute]
    public ulong Big { get; set; }
    [NodeAttribute]
    public double Ratio { get; set; }
    [NodeAttribute]
    public float Small { get; set; }
    [NodeAttribute]
    public bool On { get; set; }
    [NodeAttribute]
    public Side Side { get; set; }
    [NodeAttribute]
    public Level Level { get; set; }
    public int Inside { get; set; }
}

[Fields(Style = NameStyle.CamelCase, Version = 3)]
public class Child : IAfterReading
{
    public string Name { get; set; }
    public Child Next { get; set; }
    [Ignore]
    public int VersionRead { get; set; }
    public int NotSet { get { return 1; } }
    public void AfterReading(int version) { VersionRead = version; }
}

public class Basis
{
    [Field("flag")]
    public virtual bool Flag { get; set; }
    [Field("i1")]
    public sbyte I1 { get; set; }
}

[Fields(Style = NameStyle.CamelCase)]
public class Order : Basis
{
    public byte U1 { get; set; }
    public short I2 { get; set; }
    public ushort U2 { get; set; }
    public int I4 { get; set; }
    public uint U4 { get; set; }
    public long I8 { get; set; }
    public ulong U8 { get; set; }
    public float F { get; set; }
    public double D { get; set; }
    public Side Side { get; set; }
    public Level Level { get; set; }
    public Huge Huge { get; set; }
    public string Text { get; set; }
    public byte[] Bytes { get; set; }
    [WholeSeconds]
    public DateTime Placed { get; set; }
    public DateTime Exact { get; set; }
    public TimeSpan Lasts { get; set; }
    public decimal Price { get; set; }
    public Guid Guid { get; set; }
    public DateTimeOffset Local { get; set; }
    public int? Limit { get; set; }
    public Side? Other { get; set; }
    public Leg Leg { get; set; }
    public Child Child { get; set; }
    public Shape Shape { get; set; }
    public Point Point { get; set; }
    public Attributes Attributes { get; set; }
    public List<Leg> Legs { get; set; }
    public int[] Numbers { get; set; }
    public SortedSet<string> Names { get; set; }
    public IDictionary<string, int> Counts { get; set; }
    public SortedDictionary<int, Leg[]> Groups { get; set; }
    public IList<List<int>> Matrix { get; set; }
    public List<int?> Gaps { get; set; }
    public IEnumerable<string> Texts { get; set; }
    public Shape[] Shapes { get; set; }
    public LinkedList<Point> Points { get; set; }
    [Entries("z", "a"), Items("row")]
    public Dictionary<string, List<int[]>> Named { get; set; }
    [OmitEmpty]
    public int Zero { get; set; }
    [Field("ä id", Was = "number")]
    public string Id { get; set; }
    [Ignore]
    public object Ignored { get; set; }

    public Order()
    {
        Id = "";
        Leg = new Leg(1, 0);
        Placed = Exact = new DateTime(1970, 1, 1, 0, 0, 0, DateTimeKind.Utc);
        Names = new SortedSet<string>(StringComparer.Ordinal);
    }

    public static Order Full()
    {
        return new Order
        {
            Flag = true, I1 = -128, U1 = 255, I2 = -32768, U2 = 65535, I4 = int.MinValue, U4 = uint.MaxValue,
            I8 = long.MinValue, U8 = ulong.MaxValue, F = 0.1f, D = -0.0, Side = Side.Sell, Level = Level.High,
            Huge = Huge.High, Text = "grüß <&> \U0001F600", Bytes = new byte[] { 0, 1, 255 },
            Placed = new DateTime(1969, 12, 31, 23, 59, 59, 999, DateTimeKind.Utc),
            Exact = new DateTime(621355968000000000 + 17000000001234567, DateTimeKind.Unspecified),
            Lasts = new TimeSpan(-5), Price = -1234567890.50m,
            Guid = new Guid("00112233-4455-6677-8899-aabbccddeeff"),
            Local = new DateTimeOffset(2026, 11, 26, 19, 40, 35, new TimeSpan(5, 30, 0)).AddTicks(1234567),
            Limit = 0, Other = Side.Buy, Leg = new Leg(2, 99.5), Child = new Child { Name = "one", Next = new Child { Name = "" } },
            Shape = new Circle { Radius = 1.5 }, Point = new Point { X = 7 },
            Attributes = new Attributes { Title = "t \"&ä", Count = -3, Big = ulong.MaxValue, Ratio = 0.1, Small = 0.25f,
                                          On = true, Side = Side.Sell, Level = Level.High, Inside = 9 },
            Legs = new List<Leg> { new Leg(1, 1e300), new Leg(1, 0), new Leg(3, double.Epsilon) },
            Numbers = new[] { 3, 1, 2 }, Names = new SortedSet<string>(StringComparer.Ordinal) { "a", "B", "" },
            Counts = new Dictionary<string, int> { { "A", 1 }, { "b", -1 } },
            Groups = new SortedDictionary<int, Leg[]> { { 2, new[] { new Leg(4, 4), new Leg(5, 5) } }, { -1, new Leg[0] } },
            Matrix = new[] { new List<int> { 1, 2 }, new List<int>(), new List<int> { 3 } },
            Gaps = new List<int?> { 1, null, 3 }, Texts = new[] { "x", null, "" },
            Shapes = new Shape[] { new Square { Name = "sq" }, null },
            Points = new LinkedList<Point>(new[] { new Point { X = 1 }, new Point { X = 2 } }),
            Named = new Dictionary<string, List<int[]>> { { "n", new List<int[]> { new[] { 1 }, new[] { 2, 3 } } } },
            Zero = 1, Id = "id"
        };
    }
}
