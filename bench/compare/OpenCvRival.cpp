#include "compare/Rivals.h"

#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>

struct TOpenCvRival::TState {
    int width;
    int height;
    cv::Mat sums;

    cv::Mat Image(std::uint16_t* pixels) const { return cv::Mat(height, width, CV_16UC1, pixels); }
};

TOpenCvRival::TOpenCvRival(int width, int height) : state(new TState{width, height, cv::Mat(height, width, CV_32FC1)})
{
    cv::setNumThreads(1);
}

TOpenCvRival::~TOpenCvRival()
{
    delete state;
}

void TOpenCvRival::Subtract(std::uint16_t* output, std::uint16_t* image, std::uint16_t* background)
{
    cv::Mat target = state->Image(output);
    cv::subtract(state->Image(image), state->Image(background), target);
}

void TOpenCvRival::Scale(std::uint16_t* output, std::uint16_t* pixels, std::size_t stride, double factor)
{
    cv::Mat target = state->Image(output);
    cv::Mat(state->height, state->width, CV_16UC1, pixels, stride * sizeof *pixels).convertTo(target, CV_16U, factor);
}

void TOpenCvRival::Average(std::uint16_t* output, std::uint16_t* const* frames, std::size_t frameCount)
{
    state->sums.setTo(0);
    for (std::size_t frame = 0; frame < frameCount; ++frame) {
        cv::accumulate(state->Image(frames[frame]), state->sums);
    }
    cv::Mat target = state->Image(output);
    state->sums.convertTo(target, CV_16U, 1.0 / static_cast<double>(frameCount));
}

void TOpenCvRival::Median(std::uint16_t* output, std::uint16_t* image)
{
    cv::Mat target = state->Image(output);
    cv::medianBlur(state->Image(image), target, 3);
}

double TOpenCvRival::Statistics(std::uint16_t* pixels)
{
    double minimum = 0.0;
    double maximum = 0.0;
    cv::minMaxLoc(state->Image(pixels), &minimum, &maximum);
    return cv::mean(state->Image(pixels))[0] + minimum + maximum;
}
