// A small PNG encoder. Deflate here is greedy LZ77 (3-byte hash chains over the 32 KiB
// window) coded with the fixed Huffman tables: a fraction of zlib's code, and window
// screenshots, which are mostly flat colour, still shrink to a tenth or less.
#include "png_file.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace {

// ---------------------------------------------------------------------------------------
// Deflate (RFC 1951) with the fixed codes

constexpr int kWindow = 32768;
constexpr int kMinMatch = 3;
constexpr int kMaxMatch = 258;
constexpr int kMaxChain = 64; // candidates tried per position: speed against size
constexpr int kHashBits = 15;

constexpr std::array<int, 29> kLengthBase = {3,  4,  5,  6,   7,   8,   9,   10,  11, 13,
                                             15, 17, 19, 23,  27,  31,  35,  43,  51, 59,
                                             67, 83, 99, 115, 131, 163, 195, 227, 258};
constexpr std::array<int, 29> kLengthExtra = {0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2,
                                              2, 3, 3, 3, 3, 4, 4, 4, 4, 5, 5, 5, 5, 0};
constexpr std::array<int, 30> kDistBase = {
    1,   2,   3,   4,   5,   7,    9,    13,   17,   25,   33,   49,   65,    97,    129,
    193, 257, 385, 513, 769, 1025, 1537, 2049, 3073, 4097, 6145, 8193, 12289, 16385, 24577};
constexpr std::array<int, 30> kDistExtra = {0, 0, 0, 0, 1, 1, 2, 2,  3,  3,  4,  4,  5,  5,  6,
                                            6, 7, 7, 8, 8, 9, 9, 10, 10, 11, 11, 12, 12, 13, 13};

/// Bits go out least significant first; Huffman codes are sent most significant first.
class BitWriter {
public:
    explicit BitWriter(std::vector<unsigned char>& out) : out_(out) {}

    void Bits(uint32_t value, int count) {
        acc_ |= value << used_;
        used_ += count;
        while (used_ >= 8) {
            out_.push_back(static_cast<unsigned char>(acc_));
            acc_ >>= 8;
            used_ -= 8;
        }
    }
    void Code(uint32_t code, int length) {
        uint32_t reversed = 0;
        for (int i = 0; i < length; ++i)
            reversed = (reversed << 1) | ((code >> i) & 1u);
        Bits(reversed, length);
    }
    void Flush() {
        if (used_ > 0)
            out_.push_back(static_cast<unsigned char>(acc_));
        acc_ = 0;
        used_ = 0;
    }

private:
    std::vector<unsigned char>& out_;
    uint32_t acc_ = 0; // bits not yet written, lowest first
    int used_ = 0;     // how many of them
};

/// Literal/length symbol 0..287 in the fixed code.
void Symbol(BitWriter& w, int sym) {
    if (sym < 144)
        w.Code(0x30u + uint32_t(sym), 8);
    else if (sym < 256)
        w.Code(0x190u + uint32_t(sym - 144), 9);
    else if (sym < 280)
        w.Code(uint32_t(sym - 256), 7);
    else
        w.Code(0xC0u + uint32_t(sym - 280), 8);
}

void Match(BitWriter& w, int length, int distance) {
    int li = int(kLengthBase.size()) - 1;
    while (kLengthBase[std::size_t(li)] > length)
        --li;
    Symbol(w, 257 + li);
    w.Bits(uint32_t(length - kLengthBase[std::size_t(li)]), kLengthExtra[std::size_t(li)]);
    int di = int(kDistBase.size()) - 1;
    while (kDistBase[std::size_t(di)] > distance)
        --di;
    w.Code(uint32_t(di), 5);
    w.Bits(uint32_t(distance - kDistBase[std::size_t(di)]), kDistExtra[std::size_t(di)]);
}

uint32_t Hash3(const unsigned char* p) {
    const uint32_t v = uint32_t(p[0]) << 16 | uint32_t(p[1]) << 8 | uint32_t(p[2]);
    return (v * 2654435761u) >> (32 - kHashBits);
}

void Deflate(const std::vector<unsigned char>& data, BitWriter& w) {
    w.Bits(1, 1); // last block
    w.Bits(1, 2); // fixed Huffman codes
    const int n = int(data.size());
    std::vector<int> head(std::size_t(1) << kHashBits, -1); // newest position per hash
    std::vector<int> prev(kWindow, -1); // previous position with the same hash, by pos % window
    auto insert = [&](int pos) {
        if (pos + kMinMatch > n)
            return;
        const uint32_t h = Hash3(&data[std::size_t(pos)]);
        prev[std::size_t(pos % kWindow)] = head[h];
        head[h] = pos;
    };
    int pos = 0;
    while (pos < n) {
        int bestLength = 0, bestDistance = 0;
        if (pos + kMinMatch <= n) {
            const int limit = std::min(kMaxMatch, n - pos);
            int candidate = head[Hash3(&data[std::size_t(pos)])];
            for (int chain = 0;
                 candidate >= 0 && pos - candidate <= kWindow - 1 && chain < kMaxChain; ++chain) {
                int length = 0;
                while (length < limit &&
                       data[std::size_t(candidate + length)] == data[std::size_t(pos + length)])
                    ++length;
                if (length > bestLength) {
                    bestLength = length;
                    bestDistance = pos - candidate;
                    if (length == limit)
                        break;
                }
                const int older = prev[std::size_t(candidate % kWindow)];
                // The ring slot may already hold a newer position: chains only go back.
                if (older >= candidate)
                    break;
                candidate = older;
            }
        }
        if (bestLength >= kMinMatch) {
            Match(w, bestLength, bestDistance);
            for (int i = 0; i < bestLength; ++i)
                insert(pos + i);
            pos += bestLength;
        } else {
            Symbol(w, data[std::size_t(pos)]);
            insert(pos);
            ++pos;
        }
    }
    Symbol(w, 256); // end of block
    w.Flush();
}

uint32_t Adler32(const std::vector<unsigned char>& data) {
    uint32_t a = 1, b = 0;
    for (unsigned char byte : data) {
        a = (a + byte) % 65521u;
        b = (b + a) % 65521u;
    }
    return (b << 16) | a;
}

// ---------------------------------------------------------------------------------------
// PNG

uint32_t Crc32(const unsigned char* p, std::size_t n) {
    uint32_t crc = 0xFFFFFFFFu;
    for (std::size_t i = 0; i < n; ++i) {
        crc ^= p[i];
        for (int k = 0; k < 8; ++k)
            crc = (crc >> 1) ^ (0xEDB88320u & (0u - (crc & 1u)));
    }
    return crc ^ 0xFFFFFFFFu;
}

void Put32(std::vector<unsigned char>& out, uint32_t v) {
    for (int s = 24; s >= 0; s -= 8)
        out.push_back(static_cast<unsigned char>(v >> s));
}

void Chunk(std::vector<unsigned char>& out, const char* type,
           const std::vector<unsigned char>& data) {
    Put32(out, uint32_t(data.size()));
    const std::size_t start = out.size();
    out.insert(out.end(), type, type + 4);
    out.insert(out.end(), data.begin(), data.end());
    Put32(out, Crc32(out.data() + start, out.size() - start));
}

int Paeth(int a, int b, int c) {
    const int p = a + b - c;
    const int pa = std::abs(p - a), pb = std::abs(p - b), pc = std::abs(p - c);
    return pa <= pb && pa <= pc ? a : (pb <= pc ? b : c);
}

/// The scanlines, each behind its filter byte: of None, Sub, Up and Paeth the one whose
/// bytes, read as signed, sum to the least (the usual heuristic).
std::vector<unsigned char> FilterRows(const RgbImage& image) {
    const std::size_t stride = std::size_t(image.width) * 3;
    std::vector<unsigned char> out;
    out.reserve((stride + 1) * std::size_t(image.height));
    std::vector<unsigned char> zero(stride, 0), best(stride), trial(stride);
    for (int y = 0; y < image.height; ++y) {
        const unsigned char* row = &image.rgb[stride * std::size_t(y)];
        const unsigned char* up = y > 0 ? row - stride : zero.data();
        long bestCost = -1;
        unsigned char bestType = 0;
        for (unsigned char type : {0, 1, 2, 4}) {
            long cost = 0;
            for (std::size_t i = 0; i < stride; ++i) {
                const int left = i >= 3 ? row[i - 3] : 0;
                const int upLeft = i >= 3 ? up[i - 3] : 0;
                int predicted = 0;
                if (type == 1)
                    predicted = left;
                else if (type == 2)
                    predicted = up[i];
                else if (type == 4)
                    predicted = Paeth(left, up[i], upLeft);
                trial[i] = static_cast<unsigned char>(row[i] - predicted);
                cost += std::abs(int(static_cast<signed char>(trial[i])));
            }
            if (bestCost < 0 || cost < bestCost) {
                bestCost = cost;
                bestType = type;
                best.swap(trial);
            }
        }
        out.push_back(bestType);
        out.insert(out.end(), best.begin(), best.end());
    }
    return out;
}

} // namespace

std::vector<unsigned char> ZlibCompress(const std::vector<unsigned char>& data) {
    std::vector<unsigned char> out = {0x78, 0x01}; // deflate, 32 KiB window, no dictionary
    BitWriter bits(out);
    Deflate(data, bits);
    Put32(out, Adler32(data));
    return out;
}

bool WritePngFile(const std::string& path, const RgbImage& image) {
    if (image.width <= 0 || image.height <= 0 ||
        image.rgb.size() != std::size_t(image.width) * std::size_t(image.height) * 3)
        return false;
    std::vector<unsigned char> png = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    std::vector<unsigned char> header;
    Put32(header, uint32_t(image.width));
    Put32(header, uint32_t(image.height));
    header.insert(header.end(), {8, 2, 0, 0, 0}); // 8 bits, RGB, deflate, filters, no interlace
    Chunk(png, "IHDR", header);
    Chunk(png, "IDAT", ZlibCompress(FilterRows(image)));
    Chunk(png, "IEND", {});

    FILE* f = std::fopen(path.c_str(), "wb");
    if (!f)
        return false;
    const bool written = std::fwrite(png.data(), 1, png.size(), f) == png.size();
    return std::fclose(f) == 0 && written;
}
