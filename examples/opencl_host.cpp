// A host whose images live on a GPU. The library keeps corrections and settings and scales the background; image and
// background stay in the device's memory, where a kernel subtracts. The library is given no pixels, only a size.
//   opencl_host [LIBRARY [gpu|cpu]]     device: the first GPU, else the first CPU
#include "QX_BackgroundCorrection.hpp"

#define CL_HPP_ENABLE_EXCEPTIONS
#define CL_HPP_MINIMUM_OPENCL_VERSION 120
#define CL_HPP_TARGET_OPENCL_VERSION 120
#include <CL/opencl.hpp>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <random>

using namespace QX_KRLSDK;
constexpr int kWidth = 1024, kHeight = 1024;
constexpr std::size_t kPixels = std::size_t{kWidth} * kHeight, kBytes = kPixels * sizeof(unsigned short);

// The library's rule: what would be below 0 is 0. sub_sat stops there.
constexpr char kSource[] = "kernel void subtract(global ushort* image, global const ushort* background)"
                           "{ size_t i = get_global_id(0); image[i] = sub_sat(image[i], background[i]); }";

// The device, with room for one image and one background, and the kernel.
struct TDevice {
    cl::Device device;
    cl::Context context = cl::Context(device);
    cl::CommandQueue queue = cl::CommandQueue(context, device);
    cl::Buffer image = cl::Buffer(context, CL_MEM_READ_WRITE, kBytes);
    cl::Buffer background = cl::Buffer(context, CL_MEM_READ_ONLY, kBytes);
    cl::KernelFunctor<cl::Buffer, cl::Buffer> subtract = {cl::Program(context, kSource, true), "subtract"};
    int uploads = 0;

    // The delegate; task.image is null. The library does not say when the background has changed, but passes on a flag
    // of the host, which knows. The background is lent for this call, so that its upload is waited for.
    void operator()(const TDelegateTask& task)
    {
        if (task.flags.option) {
            queue.enqueueWriteBuffer(background, CL_TRUE, 0, kBytes, task.background);
            ++uploads;
        }
        subtract(cl::EnqueueArgs(queue, cl::NDRange(task.Length())), image, background);
    }
};

cl::Device Choose(const std::string& wanted)
{
    std::vector<cl::Platform> platforms;
    std::vector<cl::Device> devices;
    cl::Platform::get(&platforms);
    for (const char* const kind : {"gpu", "cpu"})
        for (std::size_t i = 0; i < platforms.size() && (wanted.empty() || wanted == kind) && devices.empty(); ++i)
            platforms[i].getDevices(*kind == 'g' ? CL_DEVICE_TYPE_GPU : CL_DEVICE_TYPE_CPU, &devices);
    return devices.empty() ? throw std::runtime_error("there is no OpenCL device " + wanted) : devices.front();
}

template <class TWork> void Time(const std::string& who, TWork&& correctOne)
{
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < 200; ++i)
        correctOne();
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    std::printf("%s: %.0f images of %d x %d a second\n", who.c_str(), 200 / seconds.count(), kWidth, kHeight);
}

int main(int argumentCount, char** arguments)
try {
    const std::string path = argumentCount > 1 ? arguments[1] : TBackgroundCorrectionLibrary::DefaultName();
    TBackgroundCorrection correction = TBackgroundCorrectionLibrary(path).MakeProcessor();
    TDevice device{Choose(argumentCount > 2 ? arguments[2] : "")};
    std::independent_bits_engine<std::mt19937, 16, unsigned short> random(1);
    std::vector<unsigned short> image(kPixels), result(kPixels);
    std::generate(image.begin(), image.end(), std::ref(random));
    correction.Add("dark", {{image, kWidth, kHeight}}, 0.1f, 100.0f); // seconds, percent
    correction.SetActive("dark");
    const TImageView onDevice(nullptr, kWidth, kHeight); // a size, and no pixels
    int alike = 0;
    for (int i = 0; i < 6; ++i) {
        if (i % 2 == 0)
            correction.SetExposureAndIntensity(0.1f + 0.01f * static_cast<float>(i), 100.0f);
        std::generate(image.begin(), image.end(), std::ref(random));
        device.queue.enqueueWriteBuffer(device.image, CL_TRUE, 0, kBytes, image.data()); // a camera's work
        correction.Apply(onDevice, device, {false, i % 2 == 0});
        device.queue.enqueueReadBuffer(device.image, CL_TRUE, 0, kBytes, result.data());
        correction.Apply({image, kWidth, kHeight}); // the same by the library itself
        alike += image == result;
    }
    std::printf("%d of 6 images are alike; %d backgrounds were uploaded\n", alike, device.uploads);
    Time("OpenCL on " + device.device.getInfo<CL_DEVICE_NAME>(), [&] {
        correction.Apply(onDevice, device);
        device.queue.finish(); // the kernel may still be running when Apply returns
    });
    Time("library", [&] { correction.Apply({image, kWidth, kHeight}); });
    return alike == 6 ? 0 : 1;
} catch (const std::exception& error) {
    std::fprintf(stderr, "opencl_host: %s\n", error.what());
    return 1;
}
