// The message database: any file may lie in its place, and reading it changes no byte of it.
#include "Fuzz/Input.h"
#include "Fuzz/Require.h"
#include "Model/Core/MessageDatabase.h"
#include "Tests/Support/TemporaryDevice.h"

void readInput(std::string_view bytes) {
    static TemporaryDevice device;
    device.addFile(MessageDatabase::path, bytes);
    for (const auto* table : {"attachment", "msg_pieces"}) {
        std::ignore = MessageDatabase(device.device().fileManager(), table).attachmentFolders();
    }
    require(device.contents(MessageDatabase::path) == bytes);
}
