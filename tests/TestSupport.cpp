#include "tests/TestSupport.h"

#include <cstdio>
#include <fstream>
#include <iterator>
#include <random>
// libjpeg's header wants stdio's names declared before it.
#include <jpeglib.h>

TempFolder::TempFolder()
{
    std::string path = (fs::temp_directory_path() / "tessel-XXXXXX").string();
    mPath = mkdtemp(path.data());
}

std::string ReadAll(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void WriteAll(const std::string& path, const std::string& content)
{
    std::ofstream(path, std::ios::binary) << content;
}

std::map<std::string, std::string> Tree(const std::string& folder)
{
    std::map<std::string, std::string> tree;
    for (const auto& entry : fs::recursive_directory_iterator(folder))
        if (entry.is_regular_file())
            tree[fs::relative(entry.path(), folder).string()] = ReadAll(entry.path().string());
    return tree;
}

Bytes NoisyBytes(int count, unsigned seed)
{
    std::mt19937 random(seed);
    Bytes bytes;
    for (int i = 0; i < count; ++i)
        bytes.push_back(static_cast<unsigned char>(i / 7 + static_cast<int>(random() % 64)));
    return bytes;
}

std::string EncodeJpeg(int width, int height, int components, const Bytes& pixels, int quality,
                       bool progressive)
{
    jpeg_compress_struct codec{};
    jpeg_error_mgr errors{};
    codec.err = jpeg_std_error(&errors);
    jpeg_create_compress(&codec);
    unsigned char* data = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&codec, &data, &size);
    codec.image_width = static_cast<JDIMENSION>(width);
    codec.image_height = static_cast<JDIMENSION>(height);
    codec.input_components = components;
    codec.in_color_space = components == 1 ? JCS_GRAYSCALE : components == 3 ? JCS_RGB : JCS_CMYK;
    jpeg_set_defaults(&codec);
    jpeg_set_quality(&codec, quality, TRUE);
    if (progressive)
        jpeg_simple_progression(&codec);
    jpeg_start_compress(&codec, TRUE);
    auto* row = const_cast<JSAMPROW>(pixels.data());
    for (; codec.next_scanline < codec.image_height; row += width * components)
        jpeg_write_scanlines(&codec, &row, 1);
    jpeg_finish_compress(&codec);
    jpeg_destroy_compress(&codec);
    std::string jpeg(data, data + size);
    free(data);
    return jpeg;
}

std::string SampleJpeg(int width, int height, int components, bool progressive)
{
    const Bytes pixels = NoisyBytes(width * height * components);
    return EncodeJpeg(width, height, components, pixels, 90, progressive);
}

Bytes DecodeJpeg(const std::string& jpeg)
{
    jpeg_decompress_struct codec{};
    jpeg_error_mgr errors{};
    codec.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&codec);
    jpeg_mem_src(&codec, reinterpret_cast<const unsigned char*>(jpeg.data()), jpeg.size());
    jpeg_read_header(&codec, TRUE);
    jpeg_start_decompress(&codec);
    const auto rowBytes = codec.output_width * static_cast<JDIMENSION>(codec.output_components);
    Bytes pixels(std::size_t{rowBytes} * codec.output_height);
    while (codec.output_scanline < codec.output_height) {
        JSAMPROW row = pixels.data() + std::size_t{rowBytes} * codec.output_scanline;
        jpeg_read_scanlines(&codec, &row, 1);
    }
    jpeg_finish_decompress(&codec);
    jpeg_destroy_decompress(&codec);
    return pixels;
}

SRun RunProgram(const std::string& program, const std::string& arguments, const std::string& folder)
{
    const TempFolder output;
    const std::string command = "cd " + folder + " && env -i " + program + " " + arguments + " >" +
                                output / "out" + " 2>" + output / "err";
    const int status = std::system(command.c_str());
    return {status, ReadAll(output / "out"), ReadAll(output / "err")};
}
