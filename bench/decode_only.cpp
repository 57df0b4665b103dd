// Decodes the JPEG files named by its arguments and does nothing with them: one row buffer, each
// row dropped. Prints the bytes of the largest picture.
#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <vector>
// libjpeg's header wants stdio's names declared before it.
#include <jpeglib.h>

/// Returns the bytes of the decoded picture. An error ends the program, as libjpeg does by default.
static std::size_t Decode(std::FILE* file, std::vector<unsigned char>& row)
{
    jpeg_decompress_struct decompressor{};
    jpeg_error_mgr errors{};
    decompressor.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&decompressor);
    jpeg_stdio_src(&decompressor, file);
    jpeg_read_header(&decompressor, TRUE);
    jpeg_start_decompress(&decompressor);
    row.resize(std::size_t{decompressor.output_width} *
               static_cast<std::size_t>(decompressor.output_components));
    const std::size_t bytes = row.size() * decompressor.output_height;
    while (decompressor.output_scanline < decompressor.output_height) {
        JSAMPROW samples = row.data();
        jpeg_read_scanlines(&decompressor, &samples, 1);
    }
    jpeg_finish_decompress(&decompressor);
    jpeg_destroy_decompress(&decompressor);
    return bytes;
}

int main(int argc, char** argv)
{
    std::vector<unsigned char> row;
    std::size_t largest = 0;
    for (int i = 1; i < argc; ++i) {
        std::FILE* file = std::fopen(argv[i], "rb");
        if (!file)
            return 1;
        largest = std::max(largest, Decode(file, row));
        std::fclose(file);
    }
    std::printf("%zu\n", largest);
    return 0;
}
