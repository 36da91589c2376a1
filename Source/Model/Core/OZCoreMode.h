#pragma once

/// What a run does with the items that its steps name.
enum class OZCoreMode : unsigned long {
    /// Items are deleted.
    clean = 0,
    /// Nothing changes; sizes are summed.
    analyze = 1,
    /// Items move to a backup name in their folder; sizes are summed.
    test = 2,
};
