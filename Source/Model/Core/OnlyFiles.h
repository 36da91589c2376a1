#pragma once

/// Whether a primitive leaves folders alone.
enum class OnlyFiles : bool { no, yes };
