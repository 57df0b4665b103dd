// Draws the seeds of the fuzz targets: small pictures of every kind, databases, texts, sizes.
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>
// libjpeg's header wants stdio's names declared before it.
#include <jpeglib.h>

namespace fs = std::filesystem;

namespace {

struct SKind
{
    const char* mName;
    int mComponents;
    J_COLOR_SPACE mInput;
    J_COLOR_SPACE mFile;
    void (*mChange)(jpeg_compress_struct& codec);
};

void Plain(jpeg_compress_struct& /*codec*/) {}

void Progressive(jpeg_compress_struct& codec)
{
    jpeg_simple_progression(&codec);
}

void Arithmetic(jpeg_compress_struct& codec)
{
    codec.arith_code = TRUE;
}

void Restarts(jpeg_compress_struct& codec)
{
    codec.restart_interval = 1;
}

void OddSampling(jpeg_compress_struct& codec)
{
    codec.comp_info[0].h_samp_factor = 1;
    codec.comp_info[1].h_samp_factor = 3;
    codec.comp_info[2].v_samp_factor = 2;
}

void FullSampling(jpeg_compress_struct& codec)
{
    codec.comp_info[0].h_samp_factor = codec.comp_info[0].v_samp_factor = 1;
}

void TallSampling(jpeg_compress_struct& codec)
{
    codec.comp_info[0].h_samp_factor = 1;
}

/// A scan for each component: one scan holds four at most.
void SingleScans(jpeg_compress_struct& codec)
{
    static constexpr jpeg_scan_info kScans[] = {{1, {0}, 0, 63, 0, 0},
                                                {1, {1}, 0, 63, 0, 0},
                                                {1, {2}, 0, 63, 0, 0},
                                                {1, {3}, 0, 63, 0, 0},
                                                {1, {4}, 0, 63, 0, 0}};
    codec.scan_info = kScans;
    codec.num_scans = 5;
}

constexpr SKind kKinds[] = {
    {"baseline", 3, JCS_RGB, JCS_YCbCr, Plain},
    {"progressive", 3, JCS_RGB, JCS_YCbCr, Progressive},
    {"grey", 1, JCS_GRAYSCALE, JCS_GRAYSCALE, Plain},
    {"grey_progressive", 1, JCS_GRAYSCALE, JCS_GRAYSCALE, Progressive},
    {"rgb", 3, JCS_RGB, JCS_RGB, Plain},
    {"cmyk", 4, JCS_CMYK, JCS_CMYK, Plain},
    {"ycck", 4, JCS_CMYK, JCS_YCCK, Plain},
    {"arithmetic", 3, JCS_RGB, JCS_YCbCr, Arithmetic},
    {"restarts", 3, JCS_RGB, JCS_YCbCr, Restarts},
    {"odd_sampling", 3, JCS_RGB, JCS_YCbCr, OddSampling},
    {"full_sampling", 3, JCS_RGB, JCS_YCbCr, FullSampling},
    {"tall_sampling", 3, JCS_RGB, JCS_YCbCr, TallSampling},
    {"two_components", 2, JCS_UNKNOWN, JCS_UNKNOWN, Plain},
    {"five_components", 5, JCS_UNKNOWN, JCS_UNKNOWN, SingleScans},
};

std::string Encode(const SKind& kind, JDIMENSION width, JDIMENSION height)
{
    jpeg_compress_struct codec{};
    jpeg_error_mgr errors{};
    codec.err = jpeg_std_error(&errors);
    jpeg_create_compress(&codec);
    unsigned char* bytes = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&codec, &bytes, &size);
    codec.image_width = width;
    codec.image_height = height;
    codec.input_components = kind.mComponents;
    codec.in_color_space = kind.mInput;
    jpeg_set_defaults(&codec);
    jpeg_set_colorspace(&codec, kind.mFile);
    jpeg_set_quality(&codec, 60, TRUE);
    kind.mChange(codec);
    jpeg_start_compress(&codec, TRUE);
    std::vector<unsigned char> row(width * static_cast<JDIMENSION>(kind.mComponents));
    while (codec.next_scanline < height) {
        for (std::size_t i = 0; i < row.size(); ++i)
            row[i] = static_cast<unsigned char>(i * 11 + codec.next_scanline * 29);
        unsigned char* line = row.data();
        jpeg_write_scanlines(&codec, &line, 1);
    }
    jpeg_finish_compress(&codec);
    jpeg_destroy_compress(&codec);
    std::string file(bytes, bytes + size);
    std::free(bytes);
    return file;
}

void Save(const fs::path& path, const std::string& content)
{
    std::ofstream(path, std::ios::binary) << content;
}

void SavePictures(const fs::path& folder)
{
    fs::create_directories(folder);
    for (const SKind& kind : kKinds) {
        const std::string file = Encode(kind, 21, 13);
        Save(folder / kind.mName, file);
        Save(folder / (std::string(kind.mName) + "_behind_junk"), "junk" + file + '\4');
        Save(folder / (std::string(kind.mName) + "_cut"), file.substr(0, file.size() * 3 / 4));
    }
    // What libjpeg refuses: 12 bits to a sample, and lossless files.
    const std::string file = Encode(kKinds[0], 21, 13);
    const std::size_t frame = file.find("\xff\xc0");
    std::string twelve = file;
    std::string lossless = file;
    twelve[frame + 4] = 12;
    lossless[frame + 1] = '\xc3';
    Save(folder / "twelve_bits", twelve);
    Save(folder / "lossless", lossless);
    Save(folder / "png", "\x89PNG\r\n\x1a\n");
    Save(folder / "start_only", "\xff\xd8");
}

void SaveTexts(const fs::path& dbase, const fs::path& text)
{
    const char* const kTexts[] = {"",
                                  "a.jpg\t1234567890\nb.jpg\t-5\r\n",
                                  "a.jpg\t1\na.jpg\t2\nc\t9\tmore\n",
                                  "no tab\n\t7\nx\t99999999999999999999\ny\tz\n",
                                  "/a/b\\c.d/e.JPG",
                                  "\"quoted\"",
                                  " +42abc",
                                  "-2147483648"};
    int number = 0;
    for (const fs::path& folder : {dbase, text}) {
        fs::create_directories(folder);
        for (const char* content : kTexts)
            Save(folder / std::to_string(number++), content);
    }
}

void SaveSizes(const fs::path& folder)
{
    fs::create_directories(folder);
    for (int i = 0; i < 32; ++i) {
        std::string bytes;
        for (const int value : {i, i * 37, i * 53, i * 5, i * 3, i * 91, i})
            bytes += static_cast<char>(value);
        Save(folder / std::to_string(i), bytes + "some contents, some contents");
    }
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::cerr << "Usage: make_seeds FOLDER" << std::endl;
        return 2;
    }
    const fs::path folder(argv[1]);
    SavePictures(folder / "picture");
    SaveTexts(folder / "dbase", folder / "text");
    SaveSizes(folder / "scaler");
    return 0;
}
