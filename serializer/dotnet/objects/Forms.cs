// SPDX-License-Identifier: MIT
using System;
using System.Collections.Generic;
using System.Reflection;

namespace Velmar.Q7R.Serializer.Objects
{
    // The form for a type.
    internal static class Forms
    {
        private static readonly Dictionary<Type, object> s_known = new Dictionary<Type, object>
        {
            { typeof(bool), new BoolForm() },
            { typeof(sbyte), new SByteForm() },
            { typeof(byte), new ByteForm() },
            { typeof(short), new ShortForm() },
            { typeof(ushort), new UShortForm() },
            { typeof(int), new IntForm() },
            { typeof(uint), new UIntForm() },
            { typeof(long), new LongForm() },
            { typeof(ulong), new ULongForm() },
            { typeof(float), new FloatForm() },
            { typeof(double), new DoubleForm() },
            { typeof(string), new StringForm() },
            { typeof(byte[]), new BytesForm() },
            { typeof(DateTime), new DateTimeForm() },
            { typeof(DateTimeOffset), new DateTimeOffsetForm() },
            { typeof(TimeSpan), new TimeSpanForm() },
            { typeof(decimal), new DecimalForm() },
            { typeof(Guid), new GuidForm() }
        };

        // Of collections in collections, whose forms are made at once; those of objects are later.
        private const int MostDepth = 64;
        [ThreadStatic]
        private static int s_depth;

        // That of a type with one form only.
        internal static object Known(Type type)
        {
            object form;
            return s_known.TryGetValue(type, out form) ? form : null;
        }

        internal static Form<T> Of<T>(PropertyInfo property)
        {
            return (Form<T>)Of(typeof(T), property);
        }

        // That of an object by itself.
        internal static IContent<T> Content<T>()
        {
            Type type = typeof(T);
            bool value = Known(type) != null || type.IsEnum || type.IsArray || ElementOf(type) != null;
            var content = value ? null : Of(type, null) as IContent<T>;
            if (content == null) throw Describing.Wrong(type, "no object with fields");
            return content;
        }

        // property: what tells more of it; null where there is none.
        private static object Of(Type type, PropertyInfo property)
        {
            if (s_depth == MostDepth) return Refuse(type, property, "a collection of itself");
            ++s_depth;
            try
            {
                return OfAny(type, property);
            }
            finally
            {
                --s_depth;
            }
        }

        private static object OfAny(Type type, PropertyInfo property)
        {
            if (type == typeof(DateTime) && property != null &&
                Describing.Told<WholeSecondsAttribute>(property) != null) return new DateForm();
            object known = Known(type);
            if (known != null) return known;
            if (type.IsEnum) return OfEnum(type, property);
            Type nullable = Nullable.GetUnderlyingType(type);
            if (nullable != null)
                return Describing.Make(typeof(NullableForm<>), new[] { nullable }, Of(nullable, property));
            if (typeof(ISerialisable).IsAssignableFrom(type) && !HasKinds(type))
                return type.IsValueType ? Refuse(type, property, "an ISerialisable must be a class")
                                        : Describing.Make(typeof(HostForm<>), new[] { type }, Maker(type));
            if (type.IsArray) return OfArray(type, property);
            Type element = ElementOf(type);
            if (element != null) return OfCollection(type, element, property);
            if (HasKinds(type)) return OfKinds(type);
            if (type.IsInterface || IsOfTheSystem(type))
                return Refuse(type, property, type.IsInterface ? "an interface needs kinds: [Kind(...)]"
                                                               : "a type without fields");
            return Describing.Make(type.IsValueType ? typeof(StructForm<>) : typeof(ClassForm<>), new[] { type });
        }

        // Their properties are not what they are.
        private static bool IsOfTheSystem(Type type)
        {
            string space = type.Namespace ?? "";
            return type.IsPointer || typeof(Delegate).IsAssignableFrom(type) || space == "System" ||
                   space.StartsWith("System.", StringComparison.Ordinal);
        }

        private static object OfEnum(Type type, PropertyInfo property)
        {
            bool named = Attribute.GetCustomAttribute(type, typeof(ByNameAttribute)) != null ||
                         (property != null && Describing.Told<ByNameAttribute>(property) != null);
            return named ? Describing.Make(typeof(NamedEnumForm<>), new[] { type })
                         : Describing.Make(typeof(EnumForm<,>), new[] { type, Enum.GetUnderlyingType(type) });
        }

        private static object OfArray(Type type, PropertyInfo property)
        {
            if (type.GetArrayRank() != 1)
                return Refuse(type, property, "an array of several dimensions: use arrays of arrays");
            Type element = type.GetElementType();
            return Describing.Make(typeof(ArrayForm<>), new[] { element }, Of(element, property));
        }

        private static object OfCollection(Type type, Type element, PropertyInfo property)
        {
            if (element == typeof(byte)) return Refuse(type, property, "bytes are a byte[]");
            Type[] entry = EntryOf(element);
            if (entry != null)
            {
                Type made = type.IsInterface ? typeof(Dictionary<,>).MakeGenericType(entry) : type;
                Type dictionary = typeof(IDictionary<,>).MakeGenericType(entry);
                if (type.IsAssignableFrom(made) && dictionary.IsAssignableFrom(made))
                    return Describing.Make(typeof(DictionaryForm<,,>), new[] { type, entry[0], entry[1] },
                                           Of(entry[0], property), Of(entry[1], property), Maker(made));
            }
            Type list = type;
            if (type.IsInterface)
            {
                list = typeof(List<>).MakeGenericType(element);
                if (!type.IsAssignableFrom(list)) list = typeof(HashSet<>).MakeGenericType(element);
            }
            Type collection = typeof(ICollection<>).MakeGenericType(element);
            if (!type.IsAssignableFrom(list) || !collection.IsAssignableFrom(list))
                return Refuse(type, property, "a collection that elements cannot be added to");
            return Describing.Make(typeof(ListForm<,>), new[] { type, element }, Of(element, property),
                                   Maker(list));
        }

        private static object OfKinds(Type type)
        {
            Type kind = typeof(KindForm<>.Kind).MakeGenericType(type);
            var told = (KindAttribute[])Attribute.GetCustomAttributes(type, typeof(KindAttribute), false);
            Array kinds = Array.CreateInstance(kind, told.Length);
            for (int i = 0; i < told.Length; ++i)
            {
                Type one = told[i].Type;
                if (one == null || one.IsValueType || !type.IsAssignableFrom(one))
                    throw Describing.Wrong(type, "a kind must be a class derived from it");
                // A kind of itself has fields, not kinds.
                object form = typeof(ISerialisable).IsAssignableFrom(one)
                    ? Describing.Make(typeof(HostForm<>), new[] { one }, Maker(one))
                    : Describing.Make(typeof(ClassForm<>), new[] { one });
                object made = Describing.Make(typeof(KindForm<>.KindOf<>), new[] { type, one }, told[i].Name, form);
                kinds.SetValue(made, i);
            }
            return Describing.Make(typeof(KindForm<>), new[] { type }, new object[] { kinds });
        }

        private static bool HasKinds(Type type)
        {
            return Attribute.IsDefined(type, typeof(KindAttribute), false);
        }

        // The element of a collection, null for what is none.
        private static Type ElementOf(Type type)
        {
            if (type == typeof(string)) return null;
            if (type.IsInterface && IsEnumerable(type)) return type.GetGenericArguments()[0];
            foreach (Type one in type.GetInterfaces())
            {
                if (IsEnumerable(one)) return one.GetGenericArguments()[0];
            }
            return null;
        }
        private static bool IsEnumerable(Type type)
        {
            return type.IsGenericType && type.GetGenericTypeDefinition() == typeof(IEnumerable<>);
        }
        private static Type[] EntryOf(Type element)
        {
            return element.IsGenericType && element.GetGenericTypeDefinition() == typeof(KeyValuePair<,>)
                ? element.GetGenericArguments() : null;
        }

        private static object Maker(Type type)
        {
            return typeof(Describing).GetMethod("Maker", BindingFlags.Static | BindingFlags.NonPublic)
                .MakeGenericMethod(type).Invoke(null, null);
        }

        private static object Refuse(Type type, PropertyInfo property, string reason)
        {
            throw property != null ? Describing.Wrong(property, type.Name + ": " + reason)
                                   : Describing.Wrong(type, reason);
        }
    }
}
