// SPDX-License-Identifier: MIT
using System;

namespace Velmar.Q7R.Serializer.Objects
{
    /// <summary>The name of a property's nodes, where it is not that of the property; of a value of
    /// an enumeration, that of the value.</summary>
    [AttributeUsage(AttributeTargets.Property | AttributeTargets.Field)]
    public sealed class FieldAttribute : Attribute
    {
        /// <summary>Keeps the name of the property.</summary>
        public FieldAttribute()
        {
        }

        /// <summary>Gives the nodes a name of their own.</summary>
        public FieldAttribute(string name)
        {
            Name = name;
        }

        /// <summary>The name; null for that of the property.</summary>
        public string Name { get; private set; }
        /// <summary>The name that documents of former times have; for properties.</summary>
        public string Was { get; set; }
    }

    /// <summary>A property that is no field.</summary>
    [AttributeUsage(AttributeTargets.Property)]
    public sealed class IgnoreAttribute : Attribute
    {
    }

    /// <summary>An empty or zero value is not written; where there is none, it becomes empty or
    /// zero.</summary>
    [AttributeUsage(AttributeTargets.Property)]
    public sealed class OmitEmptyAttribute : Attribute
    {
    }

    /// <summary>A text, a number, a truth value or an enumeration that stands as an attribute of the
    /// object's node, where it would be a node in it.</summary>
    [AttributeUsage(AttributeTargets.Property)]
    public sealed class NodeAttributeAttribute : Attribute
    {
    }

    /// <summary>An enumeration, or a property that is one, is written by name; by number
    /// without.</summary>
    [AttributeUsage(AttributeTargets.Property | AttributeTargets.Enum)]
    public sealed class ByNameAttribute : Attribute
    {
    }

    /// <summary>A DateTime is written as a Date, which keeps no fractions of seconds: they are cut
    /// off. Without, it is the number of its ticks of 100 ns since 1970.</summary>
    [AttributeUsage(AttributeTargets.Property)]
    public sealed class WholeSecondsAttribute : Attribute
    {
    }

    /// <summary>The names of a dictionary's keys and values; "key" and "value" without.</summary>
    [AttributeUsage(AttributeTargets.Property)]
    public sealed class EntriesAttribute : Attribute
    {
        /// <summary>Names them.</summary>
        public EntriesAttribute(string key, string value)
        {
            Key = key;
            Value = value;
        }

        /// <summary>The name of keys.</summary>
        public string Key { get; private set; }
        /// <summary>The name of values.</summary>
        public string Value { get; private set; }
    }

    /// <summary>The name of what stands in a collection within a collection; "item"
    /// without.</summary>
    [AttributeUsage(AttributeTargets.Property)]
    public sealed class ItemsAttribute : Attribute
    {
        /// <summary>Names it.</summary>
        public ItemsAttribute(string name)
        {
            Name = name;
        }

        /// <summary>The name.</summary>
        public string Name { get; private set; }
    }

    /// <summary>How names of properties become names of fields.</summary>
    public enum NameStyle
    {
        /// <summary>As they are.</summary>
        AsWritten,
        /// <summary>OrderId becomes orderId, and IOPort ioPort.</summary>
        CamelCase
    }

    /// <summary>What holds for all fields of a class.</summary>
    [AttributeUsage(AttributeTargets.Class | AttributeTargets.Struct)]
    public sealed class FieldsAttribute : Attribute
    {
        /// <summary>The style of names that are not told one by one.</summary>
        public NameStyle Style { get; set; }
        /// <summary>Other than 0: is written with each object as "version".</summary>
        public int Version { get; set; }
    }

    /// <summary>One of the types that a property of this one may hold, and the name of the node
    /// that tells so. Repeated for each.</summary>
    [AttributeUsage(AttributeTargets.Class | AttributeTargets.Interface, AllowMultiple = true,
                    Inherited = false)]
    public sealed class KindAttribute : Attribute
    {
        /// <summary>Names a type.</summary>
        public KindAttribute(string name, Type type)
        {
            Name = name;
            Type = type;
        }

        /// <summary>The name of the node.</summary>
        public string Name { get; private set; }
        /// <summary>The type.</summary>
        public Type Type { get; private set; }
    }

    /// <summary>What an object implements to be told when it has been read.</summary>
    public interface IAfterReading
    {
        /// <summary>Called once all fields are read, with the version that was stored, or
        /// 0.</summary>
        void AfterReading(int version);
    }

    /// <summary>How documents are read.</summary>
    public sealed class ReadOptions
    {
        /// <summary>A node that no field asks for is an error; ignored otherwise.</summary>
        public bool RefuseUnknown { get; set; }
    }
}
