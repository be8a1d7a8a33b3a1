// A host for the tests of the workbench, on the plain header alone. Pixels come and go as raw little-endian files.
//
//   tool_test_host correct WIDTH HEIGHT DARKS.raw DARK_EXPOSURE DARK_INTENSITY EXPOSURE INTENSITY LEVEL L T W H
//                  IMAGES.raw OUT.raw
//   tool_test_host dump FILE OUT.raw     one line per correction on the standard output, all pixels to OUT.raw
#include "QX_BackgroundCorrection.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <vector>

namespace {

using TPixels = std::vector<unsigned short>;

TPixels ReadRaw(const char* path)
{
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    TPixels pixels(bytes.size() / 2);
    std::memcpy(pixels.data(), bytes.data(), pixels.size() * 2);
    return pixels;
}

void Append(std::ofstream& file, const TPixels& pixels)
{
    file.write(reinterpret_cast<const char*>(pixels.data()), static_cast<std::streamsize>(pixels.size() * 2));
}

// The object's text and a failing status, when `code` is one.
void Require(QX_KRLSDK::QX_IBackgroundCorrection* object, unsigned int code)
{
    if (code != 0) {
        std::fprintf(stderr, "%u: %s\n", code, object->GetLastErrorMessage());
        std::exit(1);
    }
}

int Correct(QX_KRLSDK::QX_IBackgroundCorrection* object, char** a)
{
    const int width = std::atoi(a[0]), height = std::atoi(a[1]);
    const auto pixels = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    const TPixels darks = ReadRaw(a[2]);
    std::vector<const unsigned short*> frames;
    for (std::size_t at = 0; at + pixels <= darks.size(); at += pixels)
        frames.push_back(darks.data() + at);
    const auto number = [&](int index) { return static_cast<float>(std::atof(a[index])); };
    Require(object, object->AddCorrection("k", frames.data(), static_cast<int>(frames.size()), width, height, number(3),
                                          number(4)));
    Require(object, object->SetActiveCorrection("k"));
    Require(object, object->SetExposureAndIntensity(number(5), number(6)));
    Require(object, object->SetCorrectionLevel(std::atoi(a[7])));
    Require(object, object->SetRegion(std::atoi(a[8]), std::atoi(a[9]), std::atoi(a[10]), std::atoi(a[11])));
    const int length = std::atoi(a[10]) * std::atoi(a[11]);
    TPixels images = ReadRaw(a[12]);
    TPixels corrected(static_cast<std::size_t>(length));
    std::ofstream out(a[13], std::ios::binary);
    for (std::size_t at = 0; at + corrected.size() <= images.size(); at += corrected.size()) {
        Require(object, object->ApplyCorrection(images.data() + at, length, corrected.data(), length, nullptr, false,
                                                false, false));
        Append(out, corrected);
    }
    return 0;
}

int Dump(QX_KRLSDK::QX_IBackgroundCorrection* object, char** a)
{
    Require(object, object->LoadFile(a[0]));
    std::ofstream out(a[1], std::ios::binary);
    for (unsigned int index = 0; index < object->GetNumberOfCorrections(); ++index) {
        const char* const key = object->GetCorrectionKey(index);
        float exposure = 0, intensity = 0;
        int left = 0, top = 0, width = 0, height = 0;
        Require(object, object->SetActiveCorrection(key));
        Require(object, object->GetReferenceExposureAndIntensity(&exposure, &intensity));
        Require(object, object->SetExposureAndIntensity(exposure, intensity));
        Require(object, object->GetRegion(&left, &top, &width, &height));
        TPixels image(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), 65535);
        Require(object,
                object->ApplyCorrection(image.data(), width * height, nullptr, 0, nullptr, false, false, false));
        for (unsigned short& pixel : image)
            pixel = static_cast<unsigned short>(65535 - pixel);
        Append(out, image);
        std::printf("%d %d %.9g %.9g %s\n", width, height, static_cast<double>(exposure),
                    static_cast<double>(intensity), key);
    }
    return 0;
}

} // namespace

int main(int argumentCount, char** arguments)
{
    QX_KRLSDK::QX_IBackgroundCorrection* const object = CreateBackgroundCorrection();
    int status = 2;
    if (argumentCount == 16 && std::strcmp(arguments[1], "correct") == 0)
        status = Correct(object, arguments + 2);
    else if (argumentCount == 4 && std::strcmp(arguments[1], "dump") == 0)
        status = Dump(object, arguments + 2);
    DeleteBackgroundCorrection(object);
    return status;
}
