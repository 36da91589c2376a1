// The arguments of a URL.
#include "Categories/URLQuery.h"
#include "Fuzz/Input.h"
#include "Fuzz/Require.h"

void readInput(std::string_view bytes) {
    for (const auto& [name, value] : queryArguments(bytes)) {
        require(!name.contains('&') && !value.contains('&') && !name.contains('=') && !value.contains('#'));
    }
}
