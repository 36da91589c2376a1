#pragma once

#include "Tests/Faults/Trial.h"

/// What operations promise, whichever call of theirs fails.
namespace promises {

inline constexpr const char* settings = "/var/mobile/Library/Preferences/com.ozdev90.ozvarine.plist";

void nothingChanges(const tests::Aftermath& aftermath);
void onlyBackupNamesChange(const tests::Aftermath& aftermath);
/// Nothing goes but what the device's lines say, and all of it where the operation claims success.
void onlyWhatIsJunkGoes(const tests::Aftermath& aftermath);
void runEnds(const tests::Aftermath& aftermath);
void whatIsNamedHasGone(const tests::Aftermath& aftermath);
/// After a success the new end alone.
void oneEndHoldsAll(const tests::Aftermath& aftermath);
void isRefused(const tests::Aftermath& aftermath);
/// A file that could not even be unlinked may stay behind; it hides nothing.
void fileIsOldOrNew(const tests::Aftermath& aftermath);
/// Settings that could not be read when they were to be changed are kept beside the new ones.
void settingsAreOldOrNew(const tests::Aftermath& aftermath);
/// The names and contents of all files, wherever they are.
void allFilesStay(const tests::Aftermath& aftermath);

} // namespace promises
