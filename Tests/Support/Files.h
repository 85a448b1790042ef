#pragma once

#include "Platform/Foundation/URL.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

inline NS::URL url(const std::filesystem::path& path) {
    return NS::URL::fileURLWithPath(path.string());
}

inline void write(const std::filesystem::path& file, const std::string& text) {
    std::ofstream(file) << text;
}

inline std::string read(const std::filesystem::path& file) {
    std::ifstream stream(file);
    return {std::istreambuf_iterator<char>(stream), {}};
}
