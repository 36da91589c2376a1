#pragma once

/// What a front end has the engine do.
enum class OZAction : unsigned {
    none = 0,
    clean = 1,
    remove3xImages = 2,
    remove2xImages = 3,
    remove1xImages = 4,
    removeiPadImages = 5,
    remove4InchImages = 6,
    removeiTunesArtwork = 7,
    restoreBackups = 8,
    removeBackups = 9,
    removeLanguages = 10,
    removeKeyboards = 11,
    removeVoiceControlLanguages = 12,
};
