// A minimal PNG writer for test screenshots: 8-bit RGB, stored (uncompressed) deflate
// blocks, so it needs no compression library.
#pragma once

#include <string>
#include <vector>

/// Writes `rgb` (width * height * 3 bytes, rows top to bottom) to `path`.
bool WritePng(const std::string& path, int width, int height,
              const std::vector<unsigned char>& rgb);
