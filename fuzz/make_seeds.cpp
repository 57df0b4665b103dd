// Makes the seeds of the fuzz targets: small pictures of every kind, and databases.
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "tests/support/EncodeJpeg.h"

namespace fs = std::filesystem;

namespace {

struct SKind
{
    const char* mName;
    int mComponents;
    J_COLOR_SPACE mFile;
    void (*mChange)(jpeg_compress_struct& codec);
};

void Plain(jpeg_compress_struct& /*codec*/) {}

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
    {"baseline", 3, JCS_YCbCr, Plain},
    {"progressive", 3, JCS_YCbCr, Progressive},
    {"grey", 1, JCS_GRAYSCALE, Plain},
    {"grey_progressive", 1, JCS_GRAYSCALE, Progressive},
    {"rgb", 3, JCS_RGB, Plain},
    {"cmyk", 4, JCS_CMYK, Plain},
    {"ycck", 4, JCS_YCCK, Plain},
    {"arithmetic", 3, JCS_YCbCr, Arithmetic},
    {"restarts", 3, JCS_YCbCr, Restarts},
    {"odd_sampling", 3, JCS_YCbCr, OddSampling},
    {"full_sampling", 3, JCS_YCbCr, FullSampling},
    {"tall_sampling", 3, JCS_YCbCr, TallSampling},
    {"two_components", 2, JCS_UNKNOWN, Plain},
    {"five_components", 5, JCS_UNKNOWN, SingleScans},
};

std::string Encode(const SKind& kind)
{
    constexpr int kWidth = 21;
    constexpr int kHeight = 13;
    std::vector<unsigned char> pixels;
    for (int y = 0; y < kHeight; ++y) {
        for (int i = 0; i < kWidth * kind.mComponents; ++i)
            pixels.push_back(static_cast<unsigned char>(i * 11 + y * 29));
    }
    return EncodeJpeg(kWidth, kHeight, kind.mComponents, pixels, 60,
                      [&kind](jpeg_compress_struct& codec) {
                          jpeg_set_colorspace(&codec, kind.mFile);
                          kind.mChange(codec);
                      });
}

void Save(const fs::path& path, const std::string& content)
{
    std::ofstream(path, std::ios::binary) << content;
}

void SavePictures(const fs::path& folder)
{
    fs::create_directories(folder);
    for (const SKind& kind : kKinds) {
        const std::string file = Encode(kind);
        Save(folder / kind.mName, file);
        Save(folder / (std::string(kind.mName) + "_behind_junk"), "junk" + file + '\4');
        Save(folder / (std::string(kind.mName) + "_cut"), file.substr(0, file.size() * 3 / 4));
    }
    const std::string profile = ProfilePart(2, 2, "second") + ProfilePart(1, 2, "first");
    Save(folder / "profile", WithMarkers(Encode(kKinds[0]), profile));
    // What libjpeg refuses: 12 bits to a sample, and lossless files.
    const std::string file = Encode(kKinds[0]);
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

void SaveDbases(const fs::path& folder)
{
    fs::create_directories(folder);
    const char* const kTexts[] = {"", "a.jpg\t1234567890\nb.jpg\t-5\r\n",
                                  "a.jpg\t1\na.jpg\t2\nc\t9\tmore\n",
                                  "no tab\n\t7\nx\t99999999999999999999\ny\tz\n"};
    int number = 0;
    for (const char* content : kTexts)
        Save(folder / std::to_string(number++), content);
}

/// Beginnings of JPEG files with an orientation, in both byte orders, and behind another segment.
void SaveOrientations(const fs::path& folder)
{
    fs::create_directories(folder);
    const std::string little("II*\0\x08\0\0\0\1\0\x12\1\3\0\1\0\0\0\6\0\0\0\0\0\0\0", 26);
    const std::string big("MM\0*\0\0\0\x08\0\1\1\x12\0\3\0\0\0\1\0\x08\0\0\0\0\0\0", 26);
    const std::string start = "\xff\xd8";
    const std::string exif(
        "\xff\xe1\0\x22"
        "Exif\0\0",
        10);
    const std::string comment("\xff\xfe\0\4ab", 6);
    Save(folder / "little", start + exif + little);
    Save(folder / "big", start + comment + exif + big + "\xff\xda");
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
    SaveDbases(folder / "dbase");
    SaveOrientations(folder / "orientation");
    return 0;
}
