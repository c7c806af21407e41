// A raw H.264 stream, cut into the pictures that a camera would give one by one.
#pragma once

#include <cstddef>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

struct Picture
{
    std::vector<char> bytes;
    bool is_key = false;  // can be decoded on its own
};

inline std::vector<Picture> read_pictures(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> stream{std::istreambuf_iterator<char>(file), {}};
    std::vector<Picture> pictures;
    std::size_t from = 0;
    bool has_slice = false;
    bool is_key = false;
    const auto cut = [&](std::size_t to)
    {
        if (has_slice) pictures.push_back({{&stream[from], stream.data() + to}, is_key});
        from = to;
        has_slice = is_key = false;
    };
    for (std::size_t i = 0; i + 4 < stream.size(); ++i)
    {
        if (stream[i] != 0 || stream[i + 1] != 0 || stream[i + 2] != 1) continue;

        const int type = stream[i + 3] & 31;
        const bool is_slice = type >= 1 && type <= 5;
        const bool begins = is_slice ? (stream[i + 4] & 0x80) != 0 : type >= 6 && type <= 9;
        if (has_slice && begins) cut(stream[i - 1] == 0 ? i - 1 : i);
        has_slice = has_slice || is_slice;
        is_key = is_key || type == 5;
    }
    cut(stream.size());
    return pictures;
}
