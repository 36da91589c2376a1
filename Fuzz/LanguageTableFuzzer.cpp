// The table of languages: no line gives a component that would stand for any name at all.
#include "Fuzz/Input.h"
#include "Fuzz/Require.h"
#include "Model/Core/LanguageTable.h"

void readInput(std::string_view bytes) {
    for (const auto& line : languagetable::lines(bytes)) {
        for (const bool codesOnly : {false, true}) {
            for (const auto& component : languagetable::regexComponents(line, codesOnly)) {
                require(!component.empty());
            }
        }
    }
}
