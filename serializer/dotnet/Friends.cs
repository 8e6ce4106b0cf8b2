// SPDX-License-Identifier: MIT
using System.Runtime.CompilerServices;

[assembly: InternalsVisibleTo("Velmar.Q7R.Serializer.Objects")]
