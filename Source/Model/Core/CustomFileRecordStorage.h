#pragma once

#include "Model/Core/CustomFileRecord.h"
#include "Platform/PropertyList.h"

#include <optional>

/// The dictionary that stands for a record in the stored choices; what has its default is left out.
[[nodiscard]] platform::Value valueFromCustomFileRecord(const CustomFileRecord& record);

/// None for a value that is no dictionary. A needed text that is missing is empty in the record; an optional
/// value that is missing or of another type has its default.
[[nodiscard]] std::optional<CustomFileRecord> customFileRecordFromValue(const platform::Value& value);

/// Whether a record has what it needs: its path and its file type.
[[nodiscard]] bool isCompleteRecord(const CustomFileRecord& record);
