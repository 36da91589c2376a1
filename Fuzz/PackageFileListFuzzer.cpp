// Lists of a package's files: what is written back reads as the same list, in the same encoding.
#include "Fuzz/Input.h"
#include "Fuzz/Require.h"
#include "Model/Packages/OZPackageFileList.h"

void readInput(std::string_view bytes) {
    const auto list = OZPackageFileList::parse(bytes);
    const auto written = list ? list->serialize() : std::unexpected(list.error());
    if (!written || written->empty()) {
        return;
    }
    const auto again = OZPackageFileList::parse(*written);
    require(again && again->encoding == list->encoding && again->serialize() == *written);
}
