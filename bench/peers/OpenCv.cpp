#include "PixelBench.h"

#include <opencv2/imgproc.hpp>

namespace
{

// A matrix over the stored rows of a picture, without a copy.
cv::Mat Wrap(const CTarvexDib& dib)
{
    return {dib.Height(), dib.Width(), CV_8UC(dib.PixelSize()), dib.GetScanLine(0),
            static_cast<std::size_t>(dib.BytesPerScanLine())};
}

cv::Mat Source(int bits, int number = 0)
{
    return Wrap(Picture(kWidth, kHeight, bits, number));
}

cv::Mat Written(int bits)
{
    return Wrap(Target(kWidth, kHeight, bits));
}

void AddForBits(int bits)
{
    const auto add = [bits](const char* name, const std::function<void()>& work)
    { AddPeer(std::string(name) + " " + std::to_string(bits), "OpenCV", work); };
    add("AlphaBlend",
        [=]
        {
            cv::Mat to = Written(bits);
            cv::addWeighted(Source(bits), 1.0 - 77 / 256.0, Source(bits, 2), 77 / 256.0, 0.0, to);
        });
    add("TransparentBlend",
        [=]
        {
            cv::Mat to = Written(bits), mask;
            const cv::Mat first = Source(bits, 1);
            cv::inRange(first, cv::Scalar(3, 2, 1, 0), cv::Scalar(3, 2, 1, 255), mask);
            first.copyTo(to);
            Source(bits, 2).copyTo(to, mask);
        });
    add("ShadePerPixel 100%",
        [=]
        {
            cv::Mat to = Written(bits);
            cv::multiply(Source(bits), Source(bits, 2), to, 1.0 / 256.0);
        });
    add(bits == 24 ? "ShadePerPixel 37%" : "ShadePerPixel 50%",
        [=, strength = bits == 24 ? 0.37 : 0.5]
        {
            static cv::Mat factors; // of 255: (1 + strength * (first / 128 - 1)) / (1 + strength)
            cv::Mat to = Written(bits);
            const double full = 255.0 / (1.0 + strength);
            Source(bits).convertTo(factors, -1, full * strength / 128.0, full * (1.0 - strength));
            cv::multiply(factors, Source(bits, 2), to, 1.0 / 255.0);
        });
    add("Clone",
        [=]
        {
            cv::Mat to = Written(bits);
            const cv::Mat part = Source(bits)(cv::Rect(0, 0, kWidth / 2, kHeight / 2));
            cv::resize(part, to, to.size(), 0.0, 0.0, cv::INTER_NEAREST);
        });
    add("CopyRect",
        [=]
        {
            cv::Mat to = Written(bits);
            Source(bits).copyTo(to);
        });
}

} // namespace

void AddOpenCv()
{
    cv::setNumThreads(1);
    constexpr int methods[] = {cv::INTER_NEAREST, cv::INTER_LINEAR, cv::INTER_CUBIC};
    for (const Scale& s : kScales)
        for (const int bits : {24, 32})
            for (int i = 0; i < (Enlarges(s) || Reduces(s) ? 3 : 2); ++i) // at equal size its cubic copies
                AddPeer(ResizeName(s, i, bits), i < 2 ? "OpenCV" : "OpenCV*", s.width, s.height,
                        [=, method = methods[i]]
                        {
                            cv::Mat to = Wrap(Target(s.width, s.height, bits));
                            cv::resize(Wrap(Picture(s.fromWidth, s.fromHeight, bits)), to, to.size(), 0.0,
                                       0.0, method);
                        });
    AddForBits(24);
    AddForBits(32);
    AddPeer("SetAlphaPlane", "OpenCV",
            []
            {
                cv::Mat to = Written(32);
                cv::insertChannel(Source(8), to, 3);
            });
    for (const char* const name : {"AlphaAlpha", "resetAlpha"})
        AddPeer(name, "OpenCV", [] { Written(32) |= cv::Scalar(0, 0, 0, 255); });
    AddPeer("TransparentAlpha", "OpenCV",
            []
            {
                static cv::Mat to = Source(32, 1).clone();
                cv::Mat mask;
                cv::inRange(to, cv::Scalar(3, 2, 1, 0), cv::Scalar(3, 2, 1, 255), mask);
                to.setTo(cv::Scalar(3, 2, 1, 0), mask);
            });
    AddPeer("ChangeToTrueColor 24 to 32", "OpenCV",
            []
            {
                cv::Mat to = Written(32);
                cv::cvtColor(Source(24), to, cv::COLOR_BGR2BGRA);
            });
}
