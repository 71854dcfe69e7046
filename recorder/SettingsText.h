#pragma once

#include "archive/RecordedSignals.h"

#include <string>

namespace kora::recorder {

/// The operator interface's settings file, read as a text. A file that cannot be read is an empty text.
class SettingsText
{
public:
    SettingsText() = default;
    explicit SettingsText(std::string text) : content(std::move(text)) {}
    static SettingsText ofFile(const std::string& path);

    const std::string& text() const { return content; }
    /// @return 0 for a key that is missing or holds no finite number
    double number(const char* group, const char* key) const;
    /// Scale factor of a position, um.
    double scale(SignalScale which) const;
    bool operator==(const SettingsText& other) const { return content == other.content; }

private:
    std::string content;
};

} // namespace kora::recorder
