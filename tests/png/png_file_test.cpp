// PNG files of screenshots: what WritePngFile writes reads back as the same pixels, and
// images it cannot write are refused without a file.
#include "doctest/doctest.h"
#include "png/png_file.h"

#define STB_IMAGE_STATIC
#define STB_IMAGE_IMPLEMENTATION
#include <stb/stb_image.h>

#include <cstdint>
#include <cstdio>
#include <memory>
#include <random>
#include <string>

namespace {

struct StbFree {
    void operator()(unsigned char* p) const { stbi_image_free(p); }
};

/// The file read back with stb_image as 8-bit RGB; empty when it is no PNG it can read.
RgbImage readBack(const std::string& path) {
    int w = 0, h = 0, channels = 0;
    std::unique_ptr<unsigned char, StbFree> data(stbi_load(path.c_str(), &w, &h, &channels, 3));
    RgbImage image;
    if (!data)
        return image;
    image.width = w;
    image.height = h;
    image.rgb.assign(data.get(), data.get() + size_t(w) * size_t(h) * 3);
    return image;
}

/// The first bytes of the file (the PNG signature is eight).
std::string head(const std::string& path, size_t n) {
    std::string bytes(n, '\0');
    std::FILE* f = std::fopen(path.c_str(), "rb");
    if (!f)
        return {};
    bytes.resize(std::fread(bytes.data(), 1, n, f));
    std::fclose(f);
    return bytes;
}

bool exists(const std::string& path) {
    std::FILE* f = std::fopen(path.c_str(), "rb");
    if (f)
        std::fclose(f);
    return f != nullptr;
}

/// Flat areas, a gradient and noise: what screenshots hold, and what defeats compression.
RgbImage sample(int w, int h, uint32_t seed) {
    RgbImage image;
    image.width = w;
    image.height = h;
    image.rgb.resize(size_t(w) * size_t(h) * 3);
    std::mt19937 random(seed);
    for (int y = 0; y < h; ++y) {
        for (int x = 0; x < w; ++x) {
            unsigned char* p = &image.rgb[(size_t(y) * size_t(w) + size_t(x)) * 3];
            if (y < h / 3) { // flat grey, as a window background
                p[0] = p[1] = p[2] = 0xC0;
            } else if (y < 2 * h / 3) { // a gradient in each channel
                p[0] = (unsigned char)(x * 255 / (w > 1 ? w - 1 : 1));
                p[1] = (unsigned char)(y * 7);
                p[2] = (unsigned char)(255 - x);
            } else { // noise
                const uint32_t v = random();
                p[0] = (unsigned char)v;
                p[1] = (unsigned char)(v >> 8);
                p[2] = (unsigned char)(v >> 16);
            }
        }
    }
    return image;
}

std::string tempPath(const char* what) { return std::string("png_file_test_") + what + ".png"; }

} // namespace

TEST_CASE("PNG: written pixels read back exactly, for odd and even sizes") {
    struct Size {
        int w, h;
    };
    for (Size s : {Size{1, 1}, Size{3, 2}, Size{17, 9}, Size{256, 64}, Size{601, 301}}) {
        CAPTURE(s.w);
        CAPTURE(s.h);
        const RgbImage image = sample(s.w, s.h, uint32_t(s.w * 31 + s.h));
        const std::string path = tempPath("roundtrip");
        REQUIRE(WritePngFile(path, image));
        CHECK(head(path, 8) == std::string("\x89PNG\r\n\x1a\n", 8));
        const RgbImage back = readBack(path);
        CHECK(back.width == s.w);
        CHECK(back.height == s.h);
        CHECK(back.rgb == image.rgb);
        std::remove(path.c_str());
    }
}

TEST_CASE("PNG: a second write replaces the file") {
    const std::string path = tempPath("replace");
    REQUIRE(WritePngFile(path, sample(40, 30, 1)));
    const RgbImage second = sample(7, 5, 2);
    REQUIRE(WritePngFile(path, second));
    const RgbImage back = readBack(path);
    CHECK(back.width == 7);
    CHECK(back.height == 5);
    CHECK(back.rgb == second.rgb);
    std::remove(path.c_str());
}

TEST_CASE("PNG: flat pictures, as of windows, shrink well below their raw size") {
    RgbImage image;
    image.width = 600;
    image.height = 300;
    image.rgb.assign(size_t(600) * 300 * 3, 0xC0);
    const std::string path = tempPath("flat");
    REQUIRE(WritePngFile(path, image));
    std::FILE* f = std::fopen(path.c_str(), "rb");
    REQUIRE(f);
    std::fseek(f, 0, SEEK_END);
    const long size = std::ftell(f);
    std::fclose(f);
    CHECK(size > 0);
    CHECK(size < long(image.rgb.size() / 50));
    CHECK(readBack(path).rgb == image.rgb);
    std::remove(path.c_str());
}

TEST_CASE("PNG: empty or inconsistent images and unwritable paths are refused") {
    const std::string path = tempPath("refused");
    std::remove(path.c_str());
    RgbImage empty;
    CHECK_FALSE(WritePngFile(path, empty));
    RgbImage negative = sample(4, 4, 3);
    negative.width = -4;
    CHECK_FALSE(WritePngFile(path, negative));
    RgbImage shortData = sample(4, 4, 3);
    shortData.rgb.pop_back();
    CHECK_FALSE(WritePngFile(path, shortData));
    RgbImage longData = sample(4, 4, 3);
    longData.rgb.push_back(0);
    CHECK_FALSE(WritePngFile(path, longData));
    RgbImage tooWide;
    tooWide.width = 0x7FFFFFFF;
    tooWide.height = 1;
    CHECK_FALSE(WritePngFile(path, tooWide));
    CHECK_FALSE(exists(path));
    CHECK_FALSE(WritePngFile("no-such-folder/inside/x.png", sample(4, 4, 3)));
}
