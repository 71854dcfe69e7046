#include "tango/AttributePage.h"

#include "tango/ArrayTable.h"
#include "tango/ScalarTable.h"

namespace kora {

namespace {

std::string typeText(const Scalar& scalar)
{
    switch (scalar.type) {
    case ScalarType::Double:
        return "double";
    case ScalarType::Integer:
        return "short";
    case ScalarType::Boolean:
        return "boolean";
    case ScalarType::Text:
        return "text";
    case ScalarType::Enumeration:
        break;
    }
    std::string text;
    for (const std::string& choice : scalar.choices)
        text += (text.empty() ? "" : ", ") + choice;
    return text;
}

std::string row(const std::string& name, const std::string& type, const std::string& unit, const std::string& change,
                const std::string& description)
{
    return "| `" + name + "` | " + type + " | " + unit + " | " + change + " | " + description + " |\n";
}

} // namespace

std::string attributePage()
{
    std::string page = "| attribute | type | unit | change that is told | meaning |\n|---|---|---|---|---|\n";
    for (const Scalar& scalar : scalarTable()) {
        const std::string change = scalar.type == ScalarType::Double ? scalar.change : "every";
        page += row(scalar.name, typeText(scalar), scalar.unit, change, scalar.description);
    }
    for (const Array& array : arrayTable()) {
        const std::string type = "double[" + std::to_string(array.longest) + ']';
        page += row(array.name, type, array.unit, "each poll", array.description);
    }
    return page;
}

} // namespace kora
