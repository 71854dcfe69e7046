#include "archive/SegmentFolder.h"

#include <algorithm>
#include <ctime>
#include <filesystem>
#include <regex>
#include <tuple>

namespace kora::archive {

std::string segmentName(UtcNanoseconds start, int copy)
{
    const time_t seconds = time_t(start / nanosecondsPerSecond);
    tm parts = {};
    gmtime_r(&seconds, &parts);
    char text[64];
    std::strftime(text, sizeof text, "kora_%Y-%m-%dT%H%M%SZ", &parts);
    return std::string(text) + (copy > 1 ? "_" + std::to_string(copy) : std::string()) + ".h5";
}

std::string freeSegmentPath(const std::string& folder, UtcNanoseconds start)
{
    for (int copy = 1;; ++copy) {
        const std::string path = folder + '/' + segmentName(start, copy);
        std::error_code ignored;
        if (!std::filesystem::exists(path, ignored))
            return path;
    }
}

std::vector<SegmentFile> segmentsIn(const std::string& folder)
{
    static const std::regex shape(R"(kora_(\d{4}-\d\d-\d\dT)(\d\d)(\d\d)(\d\dZ)(?:_(\d{1,4}))?\.h5)");
    struct Numbered
    {
        SegmentFile file;
        int copy;
    };
    std::vector<Numbered> found;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        std::smatch match;
        if (!std::regex_match(name, match, shape))
            continue;
        const auto start =
            momentOfIsoText(match[1].str() + match[2].str() + ':' + match[3].str() + ':' + match[4].str());
        std::error_code gone;
        const auto bytes = std::filesystem::file_size(entry->path(), gone);
        if (start && !gone)
            found.push_back({{entry->path().string(), *start, std::int64_t(bytes)},
                             match[5].matched ? std::stoi(match[5].str()) : 1});
    }
    std::sort(found.begin(), found.end(), [](const Numbered& a, const Numbered& b) {
        return std::tie(a.file.start, a.copy) < std::tie(b.file.start, b.copy);
    });
    std::vector<SegmentFile> segments;
    for (Numbered& numbered : found)
        segments.push_back(std::move(numbered.file));
    return segments;
}

void removeUnfinishedSegments(const std::string& folder)
{
    static const std::regex shape(R"(kora_[0-9TZ_-]+\.h5\.new)");
    std::vector<std::filesystem::path> found;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        if (std::regex_match(entry->path().filename().string(), shape))
            found.push_back(entry->path());
    }
    for (const std::filesystem::path& path : found)
        std::filesystem::remove(path, error);
}

} // namespace kora::archive
