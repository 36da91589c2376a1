#include "Categories/URLQuery.h"

std::map<std::string, std::string, std::less<>> queryArguments(std::string_view url) {
    std::map<std::string, std::string, std::less<>> arguments;
    url = url.substr(0, url.find('#'));
    size_t start = url.find('?');
    while (start != url.npos) {
        const size_t end = url.find('&', start + 1);
        const std::string_view part = url.substr(start + 1, end == url.npos ? end : end - start - 1);
        start = end;
        const size_t equals = part.find('=');
        if (equals == part.npos) {
            arguments.insert_or_assign(std::string(part), "");
        } else if (equals != 0 || part.size() == 1) {
            arguments.insert_or_assign(std::string(part.substr(0, equals)), part.substr(equals + 1));
        }
    }
    return arguments;
}
