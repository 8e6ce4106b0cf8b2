using System.Reflection;
using System.Runtime.InteropServices;

[assembly: AssemblyTitle("Velmar.Q7R.Serializer")]
[assembly: AssemblyDescription("Self-describing object trees")]
[assembly: AssemblyVersion("1.0.0.0")]
[assembly: AssemblyFileVersion("1.0.0.0")]
[assembly: ComVisible(false)]
