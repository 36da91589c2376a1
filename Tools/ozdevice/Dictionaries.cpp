#include "DeviceBuild.h"

namespace ozdevice {
namespace {

#define OZ_ASSETS "/var/mobile/Library/Assets/com_apple_MobileAsset_DictionaryServices_dictionary"

// An asset's folder goes with its dictionary; a folder without "Contents/Info.plist" is no dictionary.
constexpr TreeEntry dictionaries[] = {
    {OZ_ASSETS "2/3d1f.asset/Info.plist"},
    {OZ_ASSETS "2/3d1f.asset/AssetData/Alder English.dictionary/Contents/Info.plist"},
    {OZ_ASSETS "2/3d1f.asset/AssetData/Alder English.dictionary/Contents/Body.data"},
    {OZ_ASSETS "2/8c02.asset/Info.plist"},
    {OZ_ASSETS "2/8c02.asset/AssetData/Cinder German.dictionary/Contents/Info.plist"},
    {OZ_ASSETS "/loose/Basin French.dictionary/Contents/Info.plist"},
    {OZ_ASSETS "/loose/notes.plist"},
    {"/Library/Dictionaries/Drift Thesaurus.dictionary/Contents/Info.plist"},
    {"/Library/Dictionaries/Drift Thesaurus.dictionary/Contents/Body.data"},
    {"/Library/Dictionaries/Unfinished.dictionary/Contents/Body.data"},
    {"/Library/Dictionaries/readme"},
    {"/var/mobile/Library/Dictionaries/ember Slang.dictionary/Contents/Info.plist"},
};

#undef OZ_ASSETS

} // namespace

void addDictionaries(DeviceBuild& build) {
    build.add(dictionaries);
}

} // namespace ozdevice
