#pragma once

#include "Platform/Files/FileManager.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// The device's database of messages, of which only the attachments' table is read. Reading changes no byte
/// of the database or of the files beside it.
class MessageDatabase {
  public:
    static constexpr std::string_view path = "/var/mobile/Library/SMS/sms.db";

    /// `table` is the attachments' table of the device's generation.
    MessageDatabase(platform::FileManager fileManager, std::string_view table);

    /// The folders of all attachments, relative to the user's home where they lie below it; a folder comes as
    /// often as it has attachments. None unless the whole table could be read.
    std::optional<std::vector<std::string>> attachmentFolders();

  private:
    [[nodiscard]] std::string fingerprint();
    std::optional<std::vector<std::string>> readFolders();

    platform::FileManager _fileManager;
    std::string_view _table;
};
