// SPDX-License-Identifier: MIT
// A program that has nothing but the package.
using System;
using Velmar.Q7R.Serializer;

internal sealed class Order : ISerialisable
{
    internal string Customer;
    internal int[] Items = new int[0];

    public void WriteValues(Node node)
    {
        node.AddValue("customer", Customer);
        foreach (int item in Items) node.AddValue("item", item);
    }

    public void ReadValues(Node node)
    {
        node.TryGetValue("customer", out Customer);
        Items = new int[node.GetSubnodeCount("item")];
        for (int i = 0; i < Items.Length; ++i) node.TryGetValue("item", i, out Items[i]);
    }
}

internal static class Consumer
{
    private static int Main()
    {
        var order = new Order { Customer = "Größe", Items = new[] { 3, 1, 2 } };
        using (var serializer = new Serializer())
        {
            var copy = new Order();
            serializer.ReadFromBinaryBuffer(copy, serializer.WriteToBinaryBuffer(order));
            serializer.WriteToFile(copy, "order.xml");
            var third = new Order();
            serializer.ReadFromFile(third, "order.xml");
            Console.WriteLine("{0}: {1}, version {2}", third.Customer, string.Join(" ", third.Items),
                              typeof(Node).Assembly.GetName().Version);
            return third.Customer == order.Customer ? 0 : 1;
        }
    }
}
