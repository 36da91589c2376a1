// A package's list of files is edited in place: what the edit is not about stays as it is.

#include "Model/Packages/OZPackage.h"
#include "Tests/Support/TemporaryDevice.h"

#include <chrono>

#include <gmock/gmock.h>

namespace fs = std::filesystem;

namespace {

using testing::ElementsAre;
using std::string_literals::operator""s;

constexpr const char* listPath = "/var/lib/dpkg/info/com.one.list";
const auto longAgo = fs::file_time_type::clock::now() - std::chrono::hours(5000);

class PackageFileList : public testing::Test {
  protected:
    void setList(std::string_view bytes) {
        device.addFile(listPath, bytes);
        fs::last_write_time(device.hostPath(listPath), longAgo);
        fs::permissions(device.hostPath(listPath), fs::perms(0640));
    }
    [[nodiscard]] std::string list() const { return device.contents(listPath); }

    TemporaryDevice device;
    OZPackage package{device.device(), "com.one"};
};

constexpr char32_t byteOrderMark = 0xFEFF;

enum class ByteOrder { little, big };

/// Text in an encoding of `width` bytes a character.
std::string wide(std::u32string_view text, size_t width, ByteOrder order) {
    std::string bytes;
    for (const char32_t character : text) {
        for (size_t index = 0; index < width; ++index) {
            const size_t place = order == ByteOrder::little ? index : width - 1 - index;
            bytes += static_cast<char>(character >> (8 * place));
        }
    }
    return bytes;
}

struct Edit {
    std::string before;
    /// What a rewritten list holds, and what stands behind it for "/new".
    std::string kept;
    std::string added = "/new\n";
};

Edit wideEdit(size_t width, ByteOrder order) {
    return {.before = wide(byteOrderMark + U"/.\n/\u00E9\u20AC"s, width, order),
            .kept = wide(byteOrderMark + U"/.\n/\u00E9\u20AC\n"s, width, order),
            .added = wide(U"/new\n", width, order)};
}

TEST_F(PackageFileList, AnEditKeepsEncodingDateAndMode) {
    const Edit edits[] = {
        {"/.\n/Library\n", "/.\n/Library\n"},
        {"/.\n/Library", "/.\n/Library\n"},
        {"/.\n\n/Library\n ", "/.\n/Library\n"},
        {"/.\r\n/Library\r\n", "/.\n/Library\n"},
        {"/caf\xC3\xA9\n", "/caf\xC3\xA9\n"},
        // No UTF-8; the bytes 0x85 and 0xA0 are letters here and neither newline nor blank.
        {"/caf\xE9\n/\x85\xA0\n", "/caf\xE9\n/\x85\xA0\n"},
        {"\xEF\xBB\xBF/.\n", "\xEF\xBB\xBF/.\n"},
        wideEdit(2, ByteOrder::little),
        wideEdit(2, ByteOrder::big),
        wideEdit(4, ByteOrder::little),
        wideEdit(4, ByteOrder::big),
    };
    for (const Edit& edit : edits) {
        SCOPED_TRACE(edit.before);
        setList(edit.before);
        EXPECT_TRUE(package.addFilePath("/new"));
        EXPECT_EQ(list(), edit.kept + edit.added);
        EXPECT_FALSE(package.addFilePath("/new"));
        EXPECT_TRUE(package.removeFilePath("/new"));
        EXPECT_FALSE(package.removeFilePath("/new"));
        EXPECT_EQ(list(), edit.kept);
        EXPECT_EQ(fs::last_write_time(device.hostPath(listPath)), longAgo);
        EXPECT_EQ(fs::status(device.hostPath(listPath)).permissions(), fs::perms(0640));
    }
}

TEST_F(PackageFileList, WhatCannotBeReadOrWouldBeEmptyStaysAsItIs) {
    for (const std::string& bytes :
         {""s, "/only\n"s, "\n/only"s, "\xFF\xFE/"s, "\xFE\xFF\xD8\x00"s, "\xEF\xBB\xBF/\xE9\n"s,
          "\n\xFE\xFF\0/\0.\0\n"s, "\n\xEF\xBB\xBF/.\n"s, "\xFF\xFE\n\0\0\0/\0\n\0"s}) {
        setList(bytes);
        EXPECT_FALSE(package.removeFilePath("/only"));
        EXPECT_EQ(list(), bytes);
        if (!bytes.contains("only")) {
            EXPECT_FALSE(package.addFilePath("/new")) << bytes;
            EXPECT_EQ(list(), bytes);
        }
    }
    setList(wide(byteOrderMark + U"/.\n"s, 2, ByteOrder::little));
    EXPECT_FALSE(package.addFilePath("/\xE9")) << "the encoding has no such character";
    EXPECT_THAT(package.pathsOfInstalledFiles().value(), ElementsAre("/."));

    OZPackage unknown(device.device(), "com.unknown");
    EXPECT_FALSE(unknown.addFilePath("/new"));
    EXPECT_EQ(unknown.pathsOfInstalledFiles(), std::nullopt);
}

TEST_F(PackageFileList, OnlyTheBlankEndIsNoPath) {
    setList("/.\n\n/a b\n  ");
    EXPECT_THAT(package.pathsOfInstalledFiles().value(), ElementsAre("/.", "", "/a b"));
    setList("/.\n\n\n");
    EXPECT_THAT(package.pathsOfInstalledFiles().value(), ElementsAre("/.", "", ""));
    setList("/a\n/b\n/a\n");
    EXPECT_TRUE(package.removeFilePath("/a"));
    EXPECT_EQ(list(), "/b\n/a\n");
}

} // namespace
