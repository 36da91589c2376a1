#pragma once

#include "Platform/Files/Error.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

/// Objects in an order of their own that are reached by name: the rows of a section, the sections of a table.
/// `Object` has a `name()`; an empty one is none.
template <class Object>
class NamedList {
  public:
    using Pointer = std::shared_ptr<Object>;

    static constexpr size_t notFound = static_cast<size_t>(-1);

    /// What an insertion throws for a name that is none or present: the exception's name and the beginning of
    /// its reason.
    constexpr NamedList(const char* exceptionName, const char* reason)
        : _exceptionName(exceptionName)
        , _reason(reason) {}

    [[nodiscard]] size_t count() const { return _objects.size(); }
    [[nodiscard]] const std::vector<Pointer>& objects() const { return _objects; }
    [[nodiscard]] std::vector<std::string> names() const {
        std::vector<std::string> names;
        for (const auto& object : _objects) {
            names.push_back(object->name());
        }
        return names;
    }
    /// Throws AssertionFailure behind the end.
    [[nodiscard]] Object& at(size_t index) const {
        OZ_REQUIRE(index < _objects.size());
        return *_objects[index];
    }
    [[nodiscard]] size_t indexOf(std::string_view name) const {
        const auto found = indexes().find(std::string(name));
        return found == indexes().end() ? notFound : found->second;
    }
    /// Null for a name that nothing has.
    [[nodiscard]] Object* named(std::string_view name) const {
        const size_t index = indexOf(name);
        return index == notFound ? nullptr : _objects[index].get();
    }

    /// Throws platform::Exception for a name that is none or present; the object has its place by then, since
    /// only a mistake of the program leads here.
    void insert(Pointer object, size_t index) {
        OZ_REQUIRE(index <= _objects.size());
        const std::string name = object->name();
        const bool isNew = !name.empty() && indexOf(name) == notFound;
        _objects.insert(_objects.begin() + static_cast<std::ptrdiff_t>(index), std::move(object));
        if (isNew && index + 1 == _objects.size()) {
            _indexes.emplace(name, index);
        } else {
            _areIndexesTrue = false;
        }
        if (!isNew) {
            throw platform::Exception(_exceptionName, _reason + (name.empty() ? "(null)" : name));
        }
    }
    /// Throws AssertionFailure for a range that leaves the list.
    void remove(size_t index, size_t length = 1) {
        OZ_REQUIRE(index <= _objects.size() && length <= _objects.size() - index);
        const auto first = _objects.begin() + static_cast<std::ptrdiff_t>(index);
        _objects.erase(first, first + static_cast<std::ptrdiff_t>(length));
        _areIndexesTrue = false;
    }
    void clear() { remove(0, count()); }

  private:
    // A removal puts off the count of the places until somebody asks, so that emptying a list one by one
    // stays quick.
    [[nodiscard]] const std::unordered_map<std::string, size_t>& indexes() const {
        if (!_areIndexesTrue) {
            _indexes.clear();
            for (size_t index = 0; index < _objects.size(); ++index) {
                _indexes.emplace(_objects[index]->name(), index);
            }
            _areIndexesTrue = true;
        }
        return _indexes;
    }

    const char* _exceptionName;
    std::string _reason;
    std::vector<Pointer> _objects;
    mutable std::unordered_map<std::string, size_t> _indexes;
    mutable bool _areIndexesTrue = true;
};
