#include "Model/Core/Removal/RemovalActions.h"

#include <algorithm>
#include <iterator>

namespace {

constexpr RemovalAction removalActions[] = {
    {.action = OZAction::remove3xImages, .kind = RemovalKind::images, .remove = remove3xImages},
    {.action = OZAction::remove2xImages, .kind = RemovalKind::images, .remove = remove2xImages},
    {.action = OZAction::remove1xImages, .kind = RemovalKind::images, .remove = remove1xImages},
    {.action = OZAction::removeiPadImages, .kind = RemovalKind::images, .remove = removeiPadImages},
    {.action = OZAction::remove4InchImages, .kind = RemovalKind::images, .remove = remove4InchImages},
    {.action = OZAction::removeiTunesArtwork, .kind = RemovalKind::images, .remove = removeiTunesArtwork},
    {.action = OZAction::removeLanguages, .kind = RemovalKind::languages, .remove = removeLanguages},
    {.action = OZAction::removeKeyboards, .kind = RemovalKind::languages, .remove = removeKeyboards},
    {.action = OZAction::removeVoiceControlLanguages,
     .kind = RemovalKind::languages,
     .remove = removeVoiceControlLanguages},
};

} // namespace

const RemovalAction* removalActionFor(OZAction action) {
    const auto* found = std::ranges::find(removalActions, action, &RemovalAction::action);
    return found == std::end(removalActions) ? nullptr : found;
}
