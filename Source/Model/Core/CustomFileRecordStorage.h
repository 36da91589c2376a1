#pragma once

#include "Model/Core/CustomFileRecord.h"
#include "Platform/Formats/PropertyList.h"

#include <optional>

/// The dictionary that stands for a record in the stored choices: what the record holds; what has its default
/// is left out.
[[nodiscard]] platform::Value valueFromCustomFileRecord(const CustomFileRecord& record);

/// None for a value that is no dictionary. A file type that is no text counts as that of a file; a folder
/// setting that is no number is unknown, and so is one beside a filter that is no text, unless the whole
/// folder goes anyway.
[[nodiscard]] std::optional<CustomFileRecord> customFileRecordFromValue(const platform::Value& value);

/// Whether a record has what it needs: its path and its file type.
[[nodiscard]] bool isCompleteRecord(const CustomFileRecord& record);
