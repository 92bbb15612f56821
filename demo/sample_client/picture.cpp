// The sample client's picture. Every pixel is a pure function of its position, so the
// picture looks the same at every size and needs no file.
#include "picture.h"

#include <algorithm>
#include <cmath>

namespace {

struct Rgb {
    float r, g, b;
};

Rgb Mix(Rgb a, Rgb b, float t) {
    return {a.r + (b.r - a.r) * t, a.g + (b.g - a.g) * t, a.b + (b.b - a.b) * t};
}

Rgb Scale(Rgb c, float s) { return {c.r * s, c.g * s, c.b * s}; }

/// Hue h in [0, 1) at full saturation and value.
Rgb Hue(float h) {
    const float k = h * 6.0f;
    auto channel = [k](float offset) {
        const float d = std::fabs(std::fmod(k + offset, 6.0f) - 3.0f) - 1.0f;
        return std::clamp(d, 0.0f, 1.0f);
    };
    return {channel(0.0f), channel(4.0f), channel(2.0f)};
}

// The scene's layout in picture units: u across (0 .. aspect), v down (0 .. 1).
constexpr float kHorizon = 0.60f;    // where the sky meets the sea
constexpr float kLandEnd = 0.72f;    // bottom of the landscape
constexpr float kRainbowTop = 0.75f; // the hue strip
constexpr float kRainbowEnd = 0.85f;
constexpr float kRampTop = 0.88f; // the grey ramp
constexpr float kRampEnd = 0.98f;

Rgb Landscape(float u, float v, float aspect) {
    const Rgb zenith = {0.08f, 0.14f, 0.42f};
    const Rgb glow = {0.98f, 0.60f, 0.32f};
    const Rgb sunColour = {1.0f, 0.94f, 0.72f};
    const float sunU = 0.68f * aspect, sunV = 0.47f, sunR = 0.07f;
    const float du = u - sunU, dv = v - sunV;
    const float sunDistance = std::sqrt(du * du + dv * dv);

    // Hills: two ridges of summed sines, the nearer one darker.
    const float far = 0.52f + 0.035f * std::sin(u * 6.0f + 1.0f) + 0.02f * std::sin(u * 17.0f);
    const float nearRidge =
        0.57f + 0.03f * std::sin(u * 4.0f + 3.0f) + 0.012f * std::sin(u * 23.0f + 0.5f);
    if (v > nearRidge)
        return Scale({0.10f, 0.22f, 0.13f}, 1.0f - 0.6f * (v - nearRidge) / (kLandEnd - nearRidge));
    if (v > far)
        return Mix({0.25f, 0.38f, 0.30f}, {0.18f, 0.30f, 0.20f}, (v - far) / 0.08f);

    Rgb sky = Mix(zenith, glow, std::pow(std::clamp(v / kHorizon, 0.0f, 1.0f), 1.6f));
    if (sunDistance < sunR)
        return sunColour;
    const float halo = std::exp(-(sunDistance - sunR) * 18.0f);
    sky = Mix(sky, sunColour, 0.55f * halo);
    return sky;
}

Rgb PixelAt(float u, float v, float aspect) {
    if (v < kLandEnd)
        return Landscape(u, v, aspect);
    const float across = u / aspect;
    if (v >= kRainbowTop && v < kRainbowEnd)
        return Hue(std::min(across, 0.9999f));
    if (v >= kRampTop && v < kRampEnd)
        return {across, across, across};
    return {0.12f, 0.12f, 0.12f};
}

} // namespace

void DrawPicture(int width, int height, float* rgb) {
    if (width < 1 || height < 1 || !rgb)
        return;
    const float aspect = float(width) / float(height);
    for (int y = 0; y < height; ++y) {
        const float v = (float(y) + 0.5f) / float(height);
        for (int x = 0; x < width; ++x) {
            const float u = (float(x) + 0.5f) / float(height);
            const Rgb c = PixelAt(u, v, aspect);
            float* p = rgb + (std::size_t(y) * std::size_t(width) + std::size_t(x)) * 3;
            p[0] = std::clamp(c.r, 0.0f, 1.0f);
            p[1] = std::clamp(c.g, 0.0f, 1.0f);
            p[2] = std::clamp(c.b, 0.0f, 1.0f);
        }
    }
}
