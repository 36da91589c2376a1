#include "Model/Core/OZAction.h"
#include "Model/Core/OZCoreRun.h"

// Actions that remove optional payload, each of them one run.

namespace {

bool removesLanguages(OZAction action) {
    return action == OZAction::removeLanguages || action == OZAction::removeKeyboards ||
           action == OZAction::removeVoiceControlLanguages;
}

} // namespace

void OZCore::remove(OZAction action, Analyze analyze) {
    const OZCoreMode mode = modeFor(analyze);
    const uint64_t freeAtStart = beginRun(mode);
    log("\n");
    if (performRemoval(action)) {
        endRun(freeAtStart);
    }
}

bool OZCore::performRemoval(OZAction action) {
    if (removesLanguages(action) && !knowsLanguageInUse()) {
        return true;
    }
    switch (action) {
    case OZAction::remove3xImages:
        removeImagesOfScale(3);
        return true;
    case OZAction::remove2xImages:
        removeImagesOfScale(2);
        return true;
    case OZAction::remove1xImages:
        removeImagesOfScale(1);
        return true;
    case OZAction::removeiPadImages:
        removeiPadImages();
        return true;
    case OZAction::remove4InchImages:
        remove4InchImages();
        return true;
    case OZAction::removeiTunesArtwork:
        removeiTunesArtwork();
        return true;
    case OZAction::removeLanguages:
        removeLanguages();
        return true;
    case OZAction::removeKeyboards:
        removeKeyboards();
        return true;
    case OZAction::removeVoiceControlLanguages:
        removeVoiceControlLanguages();
        return true;
    default:
        return false;
    }
}
