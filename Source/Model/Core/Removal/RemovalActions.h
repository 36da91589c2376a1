#pragma once

#include "Model/Core/OZAction.h"

struct RunContext;

enum class RemovalKind {
    images,
    /// Languages and what belongs to them: not for those who cannot tell the language in use.
    languages,
};

/// An action that removes payload which the device or its user has no need of; each is a run of its own.
struct RemovalAction {
    OZAction action;
    RemovalKind kind;
    void (*remove)(const RunContext& context);
};

/// Null for an action that removes no payload.
[[nodiscard]] const RemovalAction* removalActionFor(OZAction action);

// The actions.
void remove3xImages(const RunContext& context);
void remove2xImages(const RunContext& context);
void remove1xImages(const RunContext& context);
void removeiPadImages(const RunContext& context);
void remove4InchImages(const RunContext& context);
void removeiTunesArtwork(const RunContext& context);
void removeLanguages(const RunContext& context);
void removeKeyboards(const RunContext& context);
void removeVoiceControlLanguages(const RunContext& context);
