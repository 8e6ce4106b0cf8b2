// SPDX-License-Identifier: MIT
using System;

namespace Velmar.Q7R.Serializer.Objects
{
    // Objects below nodes: few calls of the native library for a whole object.
    internal static class Trees
    {
        // The root of a new tree with the object in it.
        internal static NodeHandle Of<T>(T value)
        {
            NodeHandle root = Root();
            try
            {
                Write(root, value);
                return root;
            }
            catch
            {
                root.Dispose();
                throw;
            }
        }

        internal static NodeHandle Root()
        {
            NodeHandle root;
            Native.Found(Native.NoNode, Native.vok_root_create(out root));
            return root;
        }

        internal static T New<T>()
        {
            Contents<T>.Get();
            return Kinds<T>.Are ? default(T) : Plan<T>.Get().Make();
        }

        internal static void CheckInto<T>()
        {
            if (Kinds<T>.Are) throw Describing.Wrong(typeof(T), "what has kinds is read as a new object");
        }

        internal static void Write<T>(NodeHandle node, T value)
        {
            if (value == null) throw new ArgumentNullException("value");
            IContent<T> content = Contents<T>.Get();
            var items = new ItemsOut();
            try
            {
                try
                {
                    content.WriteContent(items, value);
                }
                catch (CannotWrite)
                {
                    // The item that was added last says so.
                }
                Add(node, items);
            }
            finally
            {
                items.Release();
            }
        }

        // fail: tells the native library where the document came from; null where that is gone.
        internal static void Read<T>(NodeHandle node, ref T value, ReadOptions options,
                                     Func<CannotRead, int> fail)
        {
            IContent<T> content = Contents<T>.Get();
            ItemsIn items = ItemsIn.Of(node, options != null && options.RefuseUnknown);
            if (items == null) return;
            try
            {
                content.ReadContent(items, ItemsIn.Root, ref value);
                items.CheckTaken(ItemsIn.Root);
            }
            catch (CannotRead fault)
            {
                Native.FoundText(fail != null ? fail(fault)
                    : ObjectsNative.vok_fail_in_buffer(node, fault.Id, fault.Reason,
                                                       fault.Found ? 1 : 0, null, 0));
                throw;
            }
            finally
            {
                items.Release();
            }
        }

        // Objects that write themselves do so when all else is there.
        private static void Add(NodeHandle node, ItemsOut items)
        {
            var handles = new IntPtr[items.Hosts.Count];
            Native.FoundText(ObjectsNative.vok_node_add_items(node, items.Bytes, items.Size, handles,
                                                              handles.Length));
            if (handles.Length == 0) return;
            var nodes = new Node[handles.Length];
            for (int i = 0; i < nodes.Length; ++i) nodes[i] = new Node(handles[i]);
            try
            {
                for (int i = 0; i < nodes.Length; ++i) items.Hosts[i].WriteValues(nodes[i]);
            }
            finally
            {
                foreach (Node one in nodes) one.Dispose();
            }
        }

        private static class Contents<T>
        {
            private static volatile IContent<T> s_content;

            internal static IContent<T> Get()
            {
                return s_content ?? (s_content = Forms.Content<T>());
            }
        }

        private static class Kinds<T>
        {
            internal static readonly bool Are = Attribute.IsDefined(typeof(T), typeof(KindAttribute), false);
        }
    }
}
