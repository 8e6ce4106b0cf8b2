// SPDX-License-Identifier: MIT
using System;
using System.Reflection;

namespace Velmar.Q7R.Serializer
{
    // Lets an operation leave an output as it was. The language wants every "out" parameter
    // assigned; to the runtime it is a reference like any other, so a delegate that promises to
    // assign one can be bound to a method that does not.
    internal static class Untouched<T>
    {
        internal delegate void Assignment(out T value);

        internal static readonly Assignment Keep = (Assignment)Delegate.CreateDelegate(
            typeof(Assignment),
            typeof(Untouched<T>).GetMethod("Nothing",
                                           BindingFlags.NonPublic | BindingFlags.Static));

        private static void Nothing(ref T value)
        {
        }
    }
}
