#include "Model/Packages/OZPackageGraph.h"

#include "Categories/NSStringAdditions.h"
#include "Model/Packages/TextLines.h"

#include <algorithm>
#include <array>
#include <optional>

#include <fmt/format.h>
#include <unicode/uniset.h>

namespace {

constexpr std::string_view delimiter = "<OzvarineQueryPackageDelimiter>";
constexpr std::string_view installed = "installed";

enum Field : size_t { package, status, name, icon, preDepends, depends, fieldCount };
constexpr std::array<std::string_view, fieldCount> fieldNames = {"Package", "Status",      "Name",
                                                                 "Icon",    "Pre-depends", "Depends"};
/// Empty where the record has none.
using Fields = std::array<std::string_view, fieldCount>;

/// Sets that are frozen, which makes them fast: the whole answer goes through them.
struct CharacterSets {
    icu::UnicodeSet newlines{newlineCharacterSet()};
    /// White space within a line.
    icu::UnicodeSet blanks{whitespaceAndNewlineCharacterSet()};

    CharacterSets() {
        blanks.removeAll(newlines);
        blanks.freeze();
        newlines.freeze();
    }
};

const CharacterSets& sets() {
    static const CharacterSets sets;
    return sets;
}

std::string_view upToAnyOf(std::string_view text, const icu::UnicodeSet& set) {
    const int32_t length =
        set.spanUTF8(text.data(), static_cast<int32_t>(text.size()), USET_SPAN_NOT_CONTAINED);
    return text.substr(0, static_cast<size_t>(length));
}

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view commonBlanks = " \t";
    text.remove_prefix(std::min(text.find_first_not_of(commonBlanks), text.size()));
    text = text.substr(0, text.find_last_not_of(commonBlanks) + 1);
    const auto isPlain = [](char character) { return static_cast<unsigned char>(character) < 0x80; };
    return text.empty() || (isPlain(text.front()) && isPlain(text.back()))
               ? text
               : stringByTrimmingCharactersInSet(text, sets().blanks);
}

/// Cuts off the text before the separator, and the separator; the rest stays.
std::string_view takePiece(std::string_view& text, std::string_view separator) {
    const std::string_view piece = text.substr(0, text.find(separator));
    text.remove_prefix(std::min(piece.size() + separator.size(), text.size()));
    return piece;
}

void readLine(std::string_view line, Fields& fields) {
    const size_t equals = line.find('=');
    if (equals == std::string_view::npos || equals + 1 == line.size()) {
        return;
    }
    const auto field = std::ranges::find(fieldNames, line.substr(0, equals));
    if (field != fieldNames.end()) {
        fields[static_cast<size_t>(field - fieldNames.begin())] = line.substr(equals + 1);
    }
}

Fields readFields(std::string_view record) {
    Fields fields;
    while (!record.empty()) {
        readLine(trimmed(takeLine(record, sets().newlines)), fields);
    }
    return fields;
}

/// What a byte is in a list of packages.
enum class Kind : uint8_t { plain, separator, blank, foreign };

constexpr auto kinds = [] {
    std::array<Kind, 256> table{};
    std::fill(table.begin() + 0x80, table.end(), Kind::foreign);
    table[','] = table['|'] = Kind::separator;
    table[' '] = table['\t'] = Kind::blank;
    return table;
}();

Kind kindOf(char byte) {
    return kinds[static_cast<unsigned char>(byte)];
}

/// Calls the visitor with the names in a list such as "libfoo (>= 1.0), bar | baz": all three of them. Each
/// byte is looked at once, since lists are most of the answer.
template <class Visitor>
void visitNames(std::string_view list, Visitor visitor) {
    const char* next = list.data();
    const char* const end = next + list.size();
    while (next != end) {
        const char* const part = next = std::find_if(next, end, [](char byte) {
            return kindOf(byte) == Kind::plain || kindOf(byte) == Kind::foreign;
        });
        next = std::find_if(next, end, [](char byte) { return kindOf(byte) != Kind::plain; });
        std::string_view name(part, next);
        const bool mayHoldBlanks = next != end && kindOf(*next) == Kind::foreign;
        next = std::find_if(next, end, [](char byte) { return kindOf(byte) == Kind::separator; });
        if (mayHoldBlanks) {
            name = upToAnyOf(trimmed({part, next}), sets().blanks);
        }
        if (!name.empty()) {
            visitor(name);
        }
    }
}

bool hasNames(std::string_view list) {
    bool has = false;
    visitNames(list, [&](std::string_view) { has = true; });
    return has;
}

std::optional<std::string> textOf(std::string_view field) {
    return field.empty() ? std::nullopt : std::optional<std::string>(field);
}

} // namespace

std::string OZPackageGraph::queryFormat() {
    std::string format;
    for (const std::string_view fieldName : fieldNames) {
        // The tool itself makes newlines of the backslashes.
        format += fmt::format("{0}=${{{0}}}\\n", fieldName);
    }
    return format + std::string(delimiter) + "\\n";
}

OZPackageGraph::OZPackageGraph(platform::Device& device, std::string_view answer) {
    std::vector<Dependencies> remembered;
    while (!answer.empty()) {
        readRecord(device, takePiece(answer, delimiter), remembered);
    }
    for (size_t index = 0; index < remembered.size(); ++index) {
        link(_packages[index], remembered[index].preDepends);
        link(_packages[index], remembered[index].depends);
    }
}

OZPackage* OZPackageGraph::packageWithIdentifier(std::string_view identifier) {
    const auto found = _indexes.find(identifier);
    return found == _indexes.end() ? nullptr : &_packages[found->second];
}

void OZPackageGraph::readRecord(platform::Device& device, std::string_view text,
                                std::vector<Dependencies>& remembered) {
    const Fields fields = readFields(text);
    if (fields[package].empty() || !fields[status].ends_with(installed)) {
        return;
    }
    const size_t index = indexOfPackage(device, fields[package]);
    _packages[index].setName(textOf(fields[name]));
    _packages[index].setIconURL(textOf(fields[icon]));
    const Dependencies told{.preDepends = fields[preDepends], .depends = fields[depends]};
    if (index == remembered.size()) {
        remembered.push_back(told);
    } else if (hasNames(told.preDepends) || hasNames(told.depends)) {
        // Of two records of one package, one without dependencies leaves those of the other.
        remembered[index] = told;
    }
}

size_t OZPackageGraph::indexOfPackage(platform::Device& device, std::string_view identifier) {
    const auto found = _indexes.find(identifier);
    if (found != _indexes.end()) {
        return found->second;
    }
    const OZPackage& added = _packages.emplace_back(device, std::string(identifier));
    _indexes.emplace(added.identifier(), _packages.size() - 1);
    return _packages.size() - 1;
}

void OZPackageGraph::link(OZPackage& package, std::string_view dependencies) {
    visitNames(dependencies, [&](std::string_view dependency) {
        if (OZPackage* const other = packageWithIdentifier(dependency)) {
            package.linkToDependency(*other);
        }
    });
}
