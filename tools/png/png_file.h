// PNG files of screenshots: 8-bit RGB, compressed (deflate with the fixed Huffman codes and
// per-row filters), so that screenshots of windows stay small enough to keep in docs/.
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

/// `data` as a zlib stream (RFC 1950) of one deflate block with the fixed codes (RFC 1951).
std::vector<unsigned char> ZlibCompress(const std::vector<unsigned char>& data);
