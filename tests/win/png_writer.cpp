#include "tests/win/png_writer.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>

namespace {

uint32_t crc32(const unsigned char* p, size_t n, uint32_t crc = 0xFFFFFFFFu) {
    for (size_t i = 0; i < n; ++i) {
        crc ^= p[i];
        for (int k = 0; k < 8; ++k)
            crc = (crc >> 1) ^ (0xEDB88320u & (0u - (crc & 1u)));
    }
    return crc;
}

void put32(std::vector<unsigned char>& out, uint32_t v) {
    for (int s = 24; s >= 0; s -= 8)
        out.push_back(static_cast<unsigned char>(v >> s));
}

void chunk(std::vector<unsigned char>& out, const char* type,
           const std::vector<unsigned char>& data) {
    put32(out, uint32_t(data.size()));
    const size_t start = out.size();
    out.insert(out.end(), type, type + 4);
    out.insert(out.end(), data.begin(), data.end());
    put32(out, crc32(out.data() + start, out.size() - start) ^ 0xFFFFFFFFu);
}

} // namespace

bool WritePng(const std::string& path, int width, int height,
              const std::vector<unsigned char>& rgb) {
    if (width <= 0 || height <= 0 || rgb.size() < size_t(width) * size_t(height) * 3)
        return false;
    // Scanlines with filter byte 0.
    std::vector<unsigned char> raw;
    const size_t stride = size_t(width) * 3;
    for (int y = 0; y < height; ++y) {
        raw.push_back(0);
        raw.insert(raw.end(), rgb.begin() + long(y * stride), rgb.begin() + long((y + 1) * stride));
    }
    // zlib stream of stored blocks (at most 65535 bytes each) and the Adler-32 sum.
    std::vector<unsigned char> z{0x78, 0x01};
    for (size_t pos = 0; pos < raw.size() || raw.empty();) {
        const size_t n = std::min<size_t>(65535, raw.size() - pos);
        const bool last = pos + n == raw.size();
        z.push_back(last ? 1 : 0);
        z.push_back(uint8_t(n & 0xFF));
        z.push_back(uint8_t(n >> 8));
        z.push_back(uint8_t(~n & 0xFF));
        z.push_back(uint8_t((~n >> 8) & 0xFF));
        z.insert(z.end(), raw.begin() + long(pos), raw.begin() + long(pos + n));
        pos += n;
        if (last)
            break;
    }
    uint32_t a = 1, b = 0;
    for (unsigned char c : raw) {
        a = (a + c) % 65521;
        b = (b + a) % 65521;
    }
    put32(z, (b << 16) | a);

    std::vector<unsigned char> png{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    std::vector<unsigned char> ihdr;
    put32(ihdr, uint32_t(width));
    put32(ihdr, uint32_t(height));
    ihdr.insert(ihdr.end(), {8, 2, 0, 0, 0}); // 8-bit RGB, no interlace
    chunk(png, "IHDR", ihdr);
    chunk(png, "IDAT", z);
    chunk(png, "IEND", {});

    std::FILE* f = std::fopen(path.c_str(), "wb");
    if (!f)
        return false;
    const bool ok = std::fwrite(png.data(), 1, png.size(), f) == png.size();
    return std::fclose(f) == 0 && ok;
}
