#pragma once

namespace platform {

/// Whether a folder, by its descriptor, is this machine's own root, by whatever path it was reached. It is
/// never a device. True also where that cannot be found out.
[[nodiscard]] bool isHostRoot(int folder);

} // namespace platform
