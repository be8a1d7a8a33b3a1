// The smallest host in C#, on the flat interface: one correction out of two dark frames, applied to an image of twice
// the exposure. The two libraries lie beside the program (on Linux LD_LIBRARY_PATH names their folder).
using System;
using System.Runtime.InteropServices;
using System.Text;

static class CSharpHost
{
    const string Library = "QX_BACKGROUNDCORRECTION_C";

    [DllImport(Library)] static extern uint QXBC_LoadLibrary(byte[] reason, uint reasonSize);
    [DllImport(Library)] static extern IntPtr QXBC_DescribeCode(uint code);
    [DllImport(Library)] static extern IntPtr QXBC_GetLastErrorMessage(IntPtr handle);
    [DllImport(Library)] static extern uint QXBC_CreateProcessor(out IntPtr handle);
    [DllImport(Library)] static extern uint QXBC_Delete(IntPtr handle);
    [DllImport(Library)] static extern uint QXBC_AddCorrection(IntPtr handle, byte[] key, IntPtr[] frames,
        int frameCount, int width, int height, float exposureSeconds, float lightIntensityPercent);
    [DllImport(Library)] static extern uint QXBC_SetActiveCorrection(IntPtr handle, byte[] key);
    [DllImport(Library)] static extern uint QXBC_SetExposureAndIntensity(IntPtr handle, float exposureSeconds,
        float lightIntensityPercent);
    // An array of a simple type is pinned for the call, not copied.
    [DllImport(Library)] static extern uint QXBC_ApplyCorrection(IntPtr handle, ushort[] image, int imageLength,
        ushort[] output, int outputLength, ref Delegates delegates, int useDelegate, int delegateProcessing,
        int delegateOption);

    [UnmanagedFunctionPointer(CallingConvention.Cdecl)]
    delegate uint SubtractInPlace(IntPtr user, IntPtr image, IntPtr background, int width, int height, int processing,
        int option);

    [StructLayout(LayoutKind.Sequential)]
    struct Delegates
    {
        public IntPtr user;
        public SubtractInPlace subtractInPlace;
        public IntPtr subtractInto, processInPlace;
    }

    // Texts are UTF-8 and end in a null.
    static byte[] Text(string text) { return Encoding.UTF8.GetBytes(text + "\0"); }

    static void Check(IntPtr handle, uint code)
    {
        if (code != 0)
            throw new Exception("code " + code + ". " + Marshal.PtrToStringAnsi(QXBC_DescribeCode(code))
                + Marshal.PtrToStringAnsi(QXBC_GetLastErrorMessage(handle)));
    }

    static ushort[] Flat(ushort value)
    {
        var pixels = new ushort[16 * 16];
        for (int i = 0; i < pixels.Length; ++i)
            pixels[i] = value;
        return pixels;
    }

    static void Run(IntPtr handle)
    {
        GCHandle dark1 = GCHandle.Alloc(Flat(100), GCHandleType.Pinned);
        GCHandle dark2 = GCHandle.Alloc(Flat(103), GCHandleType.Pinned);
        var frames = new[] { dark1.AddrOfPinnedObject(), dark2.AddrOfPinnedObject() };
        Check(handle, QXBC_AddCorrection(handle, Text("dark"), frames, 2, 16, 16, 0.1f, 100.0f));
        dark1.Free();
        dark2.Free();
        Check(handle, QXBC_SetActiveCorrection(handle, Text("dark")));
        Check(handle, QXBC_SetExposureAndIntensity(handle, 0.2f, 100.0f));

        var image = Flat(1000);
        var delegates = new Delegates();
        delegates.subtractInPlace = (user, pixels, background, width, height, processing, option) => {
            Console.WriteLine("a delegate was given {0} x {1} pixels and a background of {2}", width, height,
                (ushort)Marshal.ReadInt16(background));
            return 0;
        };
        Check(handle, QXBC_ApplyCorrection(handle, image, image.Length, null, 0, ref delegates, 1, 0, 0));
        GC.KeepAlive(delegates.subtractInPlace); // the library may call it until here
        Check(handle, QXBC_ApplyCorrection(handle, image, image.Length, null, 0, ref delegates, 0, 0, 0));
        Console.WriteLine("1000 became {0}", image[0]);
    }

    static int Main()
    {
        IntPtr handle = IntPtr.Zero;
        try
        {
            var reason = new byte[500];
            if (QXBC_LoadLibrary(reason, (uint)reason.Length) != 0)
                throw new Exception(Encoding.UTF8.GetString(reason).TrimEnd('\0'));
            Check(IntPtr.Zero, QXBC_CreateProcessor(out handle));
            Run(handle);
            Check(handle, QXBC_Delete(handle));
            return 0;
        }
        catch (Exception error)
        {
            Console.Error.WriteLine("CSharpHost: " + error.Message);
            return 1;
        }
    }
}
