// SPDX-License-Identifier: MIT
using System;
using System.Collections.Generic;
using System.Linq.Expressions;
using System.Reflection;
using System.Text;

namespace Velmar.Q7R.Serializer.Objects
{
    // What types say of themselves. Asked for once for each type.
    internal static class Describing
    {
        private const BindingFlags Any = BindingFlags.Public | BindingFlags.NonPublic | BindingFlags.Instance;

        // Public ones that can be read and set, those of bases included; of several with one name
        // the most derived.
        internal static List<PropertyInfo> PropertiesOf(Type type)
        {
            var all = new List<PropertyInfo>();
            var names = new HashSet<string>(StringComparer.Ordinal);
            for (; type != null && type != typeof(object); type = type.BaseType)
            {
                foreach (PropertyInfo property in type.GetProperties(BindingFlags.Public | BindingFlags.Instance |
                                                                     BindingFlags.DeclaredOnly))
                {
                    if (property.GetIndexParameters().Length != 0) continue;
                    MethodInfo get = property.GetGetMethod(), set = property.GetSetMethod();
                    bool both = get != null && set != null;
                    // One that overrides a half leaves the whole to its base.
                    if (!both && IsOverride(get ?? set)) continue;
                    if (!names.Add(property.Name) || !both) continue;
                    if (Told<IgnoreAttribute>(property) == null) all.Add(property);
                }
            }
            return all;
        }

        private static bool IsOverride(MethodInfo method)
        {
            return method != null && method.GetBaseDefinition() != method;
        }

        internal static A Told<A>(MemberInfo member) where A : Attribute
        {
            return (A)Attribute.GetCustomAttribute(member, typeof(A));
        }

        internal static Within WithinOf(PropertyInfo property)
        {
            var entries = Told<EntriesAttribute>(property);
            var items = Told<ItemsAttribute>(property);
            if (entries == null && items == null) return Within.Usual;
            return new Within(entries != null ? entries.Key : "key", entries != null ? entries.Value : "value",
                              items != null ? items.Name : "item");
        }

        // Of capitals at the beginning, all but one that begins a word of small letters.
        internal static string Styled(string name, NameStyle style)
        {
            if (style == NameStyle.AsWritten) return name;
            var text = new StringBuilder(name);
            for (int i = 0; i < text.Length && char.IsUpper(name[i]); ++i)
            {
                if (i > 0 && i + 1 < name.Length && !char.IsUpper(name[i + 1])) break;
                text[i] = char.ToLowerInvariant(name[i]);
            }
            return text.ToString();
        }

        // A function that makes objects; one that tells what is missing where they cannot be made.
        internal static Func<T> Maker<T>()
        {
            if (typeof(T).IsValueType) return () => default(T);
            ConstructorInfo constructor = typeof(T).IsAbstract
                ? null : typeof(T).GetConstructor(Any, null, Type.EmptyTypes, null);
            if (constructor == null)
            {
                string reason = typeof(T).IsAbstract ? "an abstract type needs kinds: [Kind(...)]"
                                                     : "reading needs a constructor without parameters";
                return () => { throw Wrong(typeof(T), reason); };
            }
            return Expression.Lambda<Func<T>>(Expression.New(constructor)).Compile();
        }

        // An object of a generic type, whose constructor may say what is wrong.
        internal static object Make(Type generic, Type[] types, params object[] arguments)
        {
            try
            {
                return Activator.CreateInstance(generic.MakeGenericType(types),
                    BindingFlags.Instance | BindingFlags.NonPublic | BindingFlags.Public, null, arguments, null);
            }
            catch (TargetInvocationException e)
            {
                if (e.InnerException is ApplicationException) throw e.InnerException;
                throw;
            }
        }

        internal static ApplicationException Wrong(Type type, string reason)
        {
            return new ApplicationException(type.FullName + ": " + reason);
        }
        internal static ApplicationException Wrong(PropertyInfo property, string reason)
        {
            return new ApplicationException(property.DeclaringType.FullName + "." + property.Name + ": " + reason);
        }
    }
}
