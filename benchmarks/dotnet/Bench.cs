// SPDX-License-Identifier: MIT
// Objects to bytes and back in .NET, beside others, in microseconds: the least of several rounds.
//
//     dotnet build benchmarks/dotnet -c Release -o build/dotnet/bench/out
//     LD_LIBRARY_PATH=build/release/serializer/c dotnet build/dotnet/bench/out/Bench.dll
using System;
using System.Collections.Generic;
using System.Diagnostics;
using System.IO;
using System.Text.Json;
using MessagePack;
using ProtoBuf;
using Velmar.Q7R.Serializer;
using Velmar.Q7R.Serializer.Objects;

[ProtoContract, MessagePackObject(keyAsPropertyName: true)]
public class Leg
{
    [ProtoMember(1)] public int V1 { get; set; }
    [ProtoMember(2)] public int V2 { get; set; }
    [ProtoMember(3)] public int V3 { get; set; }
    [ProtoMember(4)] public int V4 { get; set; }
}

[ProtoContract, MessagePackObject(keyAsPropertyName: true)]
public class Order
{
    [ProtoMember(1)] public int Id { get; set; }
    [ProtoMember(2)] public string Symbol { get; set; } = "";
    [ProtoMember(3)] public double Price { get; set; }
    [ProtoMember(4)] public int Quantity { get; set; }
    [ProtoMember(5)] public bool Active { get; set; }
    [ProtoMember(6)] public string Note { get; set; } = "";
    [ProtoMember(7)] public List<string> Tags { get; set; } = new List<string>();
    [ProtoMember(8)] public Leg Leg { get; set; }
}

[ProtoContract, MessagePackObject(keyAsPropertyName: true)]
public class Orders : ISerialisable
{
    [ProtoMember(1)] public List<Order> Order { get; set; } = new List<Order>();

    // The same by hand.
    public void WriteValues(Node node)
    {
        foreach (Order o in Order)
        {
            using Node sub = node.AddSubnode("Order");
            sub.AddValue("Active", o.Active);
            sub.AddValue("Id", o.Id);
            sub.AddValue("Leg", o.Leg.V1, o.Leg.V2, o.Leg.V3, o.Leg.V4);
            sub.AddValue("Note", o.Note);
            sub.AddValue("Price", o.Price);
            sub.AddValue("Quantity", o.Quantity);
            sub.AddValue("Symbol", o.Symbol);
            foreach (string tag in o.Tags) sub.AddValue("Tags", tag);
        }
    }

    public void ReadValues(Node node)
    {
        Order.Clear();
        for (int i = 0; node.TryGetSubnode("Order", i, out Node sub); ++i)
        {
            using (sub)
            {
                var o = new Order();
                Order.Add(o);
                bool active;
                if (sub.TryGetValue("Active", out active)) o.Active = active;
                int number;
                if (sub.TryGetValue("Id", out number)) o.Id = number;
                if (sub.TryGetValue("Quantity", out number)) o.Quantity = number;
                if (sub.TryGetValue("Leg", out int v1, out int v2, out int v3, out int v4))
                    o.Leg = new Leg { V1 = v1, V2 = v2, V3 = v3, V4 = v4 };
                string text;
                if (sub.TryGetValue("Note", out text)) o.Note = text;
                if (sub.TryGetValue("Symbol", out text)) o.Symbol = text;
                double price;
                if (sub.TryGetValue("Price", out price)) o.Price = price;
                for (int n = 0; sub.TryGetValue("Tags", n, out text); ++n) o.Tags.Add(text);
            }
        }
    }
}

// What objects of properties alone are: one that writes itself would be asked to.
[MessagePackObject(keyAsPropertyName: true)]
public class Plain
{
    public List<Order> Order { get; set; } = new List<Order>();
}

internal static class Bench
{
    private static Orders Make(int count)
    {
        var orders = new Orders();
        for (int i = 0; i < count; ++i)
        {
            orders.Order.Add(new Order {
                Id = i, Symbol = "SYM" + i % 100, Price = 100 + i * 0.01, Quantity = i % 1000, Active = i % 2 == 0,
                Note = "a note of some length, number " + i, Tags = new List<string> { "alpha", "beta", "gamma" },
                Leg = new Leg { V1 = i, V2 = 2, V3 = 3, V4 = 4 }
            });
        }
        return orders;
    }

    private static double Least(int rounds, Action body)
    {
        double least = double.MaxValue;
        for (int i = 0; i < rounds + 10; ++i)
        {
            long start = Stopwatch.GetTimestamp();
            body();
            double taken = (Stopwatch.GetTimestamp() - start) * 1e6 / Stopwatch.Frequency;
            if (i >= 10) least = Math.Min(least, taken);
        }
        return least;
    }

    private static void Row(string name, int rounds, Func<byte[]> write, Func<byte[], int> read, int count)
    {
        byte[] bytes = write();
        if (read(bytes) != count) throw new InvalidOperationException(name + ": not all was read");
        Console.WriteLine("{0,-28} {1,12:F1} {2,12:F1} {3,10}", name, Least(rounds, () => write()),
                          Least(rounds, () => read(bytes)), bytes.Length);
    }

    private static byte[] Packed(Orders orders)
    {
        var stream = new MemoryStream();
        ProtoBuf.Serializer.Serialize(stream, orders);
        return stream.ToArray();
    }

    private static void Main()
    {
        var objects = new ObjectSerializer();
        var serializer = new Velmar.Q7R.Serializer.Serializer();
        foreach (int count in new[] { 1, 10000 })
        {
            int rounds = count == 1 ? 20000 : 50;
            Orders orders = Make(count);
            var plain = new Plain { Order = orders.Order };
            Console.WriteLine("{0,-28} {1,12} {2,12} {3,10}", count + " orders", "write, us", "read, us", "bytes");
            Row("objects", rounds, () => objects.Write(plain), b => objects.Read<Plain>(b).Order.Count, count);
            Row("by hand, ISerialisable", rounds, () => serializer.WriteToBinaryBuffer(orders), b => {
                var read = new Orders();
                serializer.ReadFromBinaryBuffer(read, b);
                return read.Order.Count;
            }, count);
            Row("System.Text.Json", rounds, () => JsonSerializer.SerializeToUtf8Bytes(plain),
                b => JsonSerializer.Deserialize<Plain>(b).Order.Count, count);
            Row("MessagePack, names", rounds, () => MessagePackSerializer.Serialize(plain),
                b => MessagePackSerializer.Deserialize<Plain>(b).Order.Count, count);
            Row("protobuf-net", rounds, () => Packed(orders),
                b => ProtoBuf.Serializer.Deserialize<Orders>(new MemoryStream(b)).Order.Count, count);
        }
    }
}
