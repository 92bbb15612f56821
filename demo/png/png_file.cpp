// The one place stb_image_write's implementation is compiled.
#include "png/png_file.h"

#include <climits>
#include <cstddef>

#define STB_IMAGE_WRITE_STATIC
#define STB_IMAGE_WRITE_IMPLEMENTATION
#include <stb/stb_image_write.h>

bool WritePngFile(const std::string& path, const RgbImage& image) {
    if (image.width <= 0 || image.height <= 0 || image.width > INT_MAX / 3)
        return false;
    const std::size_t stride = std::size_t(image.width) * 3;
    if (image.rgb.size() != stride * std::size_t(image.height))
        return false;
    return stbi_write_png(path.c_str(), image.width, image.height, 3, image.rgb.data(),
                          int(stride)) != 0;
}
