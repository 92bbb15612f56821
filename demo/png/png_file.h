// PNG files of screenshots: 8-bit RGB, compressed by stb_image_write (Debian's libstb-dev).
#pragma once

#include <string>
#include <vector>

/// An RGB picture: 3 bytes per pixel, rows top to bottom.
struct RgbImage {
    int width = 0;
    int height = 0;
    std::vector<unsigned char> rgb; // width * height * 3 bytes
};

/// Writes `image` to `path`, replacing the file. FALSE when the image is empty or
/// inconsistent, or the file cannot be written.
bool WritePngFile(const std::string& path, const RgbImage& image);
