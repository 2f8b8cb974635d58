#include "Packaging/feed/FeedDocument.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <system_error>
#include <vector>

namespace {

std::vector<std::string> lines(const std::string& path) {
    std::vector<std::string> result;
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);)
        result.push_back(line);
    return result;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 5) {
        std::cerr << "usage: " << argv[0] << " <version> <package> <notes> <notes in Ukrainian> [<downloads>]\n";
        return 2;
    }
    const std::filesystem::path package = argv[2];
    std::error_code error;
    const auto size = std::filesystem::file_size(package, error);
    if (error) {
        std::cerr << package.string() << ": " << error.message() << '\n';
        return 1;
    }
    const auto document = quillmere::feedDocument({
        .version = argv[1],
        .file = package.filename().string(),
        .size = static_cast<std::int64_t>(size),
        .downloads = argc > 5 ? argv[5] : "",
        .notes = lines(argv[3]),
        .notesInUkrainian = lines(argv[4]),
    });
    if (!document) {
        std::cerr << "The program would not take the feed. " << document.error() << '\n';
        return 1;
    }
    std::cout << *document;
    return 0;
}
