#include "Model/Packages/OZPackageGraph.h"

#include "Categories/Text.h"
#include "Model/Packages/PackageName.h"
#include "Model/Packages/TextLines.h"
#include "Platform/Formats/UTF8.h"

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

/// True if a line feed is the only newline in the text, and all of it ASCII. Nearly every record is.
bool isPlain(std::string_view text) {
    return std::ranges::all_of(text, [](char byte) {
        return static_cast<signed char>(byte) >= ' ' || byte == '\n' || byte == '\t';
    });
}

std::string_view takePlainLine(std::string_view& text) {
    const std::string_view line = text.substr(0, text.find('\n'));
    text.remove_prefix(std::min(line.size() + 1, text.size()));
    return line;
}

Fields readFields(std::string_view record, bool plain) {
    Fields fields;
    while (!record.empty()) {
        readLine(trimmed(plain ? takePlainLine(record) : takeLine(record, sets().newlines)), fields);
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

OZPackageGraph::OZPackageGraph(platform::Device& device)
    : _device(device)
    , _records(std::string(delimiter)) {}

void OZPackageGraph::read(std::string_view bytes) {
    _isEmpty = _isEmpty && bytes.empty();
    _records.add(bytes, [this](std::string_view record) { readRecord(record); });
}

bool OZPackageGraph::link() {
    readRecord(_records.rest());
    for (OZPackage& package : _packages) {
        for (const uint32_t name : _named[_indexes.find(package.identifier())->second].dependencies) {
            if (OZPackage* const other = _named[name].package) {
                package.linkToDependency(*other);
            }
        }
    }
    return !_isEmpty;
}

OZPackage* OZPackageGraph::packageWithIdentifier(std::string_view identifier) {
    const auto found = _indexes.find(identifier);
    return found == _indexes.end() ? nullptr : _named[found->second].package;
}

void OZPackageGraph::readRecord(std::string_view text) {
    const bool plain = isPlain(text);
    if (!plain && !platform::isUTF8(text)) {
        return;
    }
    const Fields fields = readFields(text, plain);
    if (fields[package].empty() || !fields[status].ends_with(installed)) {
        return;
    }
    Named& named = _named[indexOfName(fields[package])];
    if (named.package == nullptr) {
        named.package = &_packages.emplace_back(_device, std::string(fields[package]));
    }
    named.package->setName(textOf(fields[name]));
    named.package->setIconURL(textOf(fields[icon]));
    std::vector<uint32_t> dependencies;
    addNames(fields[preDepends], dependencies);
    addNames(fields[depends], dependencies);
    // Of two records of one package, one without dependencies leaves those of the other.
    if (!dependencies.empty()) {
        named.dependencies = std::move(dependencies);
    }
}

uint32_t OZPackageGraph::indexOfName(std::string_view name) {
    const auto found = _indexes.find(name);
    if (found != _indexes.end()) {
        return found->second;
    }
    _named.emplace_back();
    const auto index = static_cast<uint32_t>(_named.size() - 1);
    _indexes.emplace(name, index);
    return index;
}

void OZPackageGraph::addNames(std::string_view list, std::vector<uint32_t>& names) {
    visitNames(list, [&](std::string_view dependency) {
        if (const auto name = withoutArchitecture(dependency); !name.empty()) {
            names.push_back(indexOfName(name));
        }
    });
}
