#pragma once

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

/// A walk over a list that never changes; copies share the list. A default-made iterator is unset.
template <typename T>
class Iterator {
public:
    Iterator() = default;
    explicit Iterator(std::vector<T> elements)
        : list(std::make_shared<std::vector<T> const>(std::move(elements)))
    {
    }

    bool isSet() const { return list != nullptr; }
    void toStart() { position = 0; }
    bool isAtEnd() const { return position >= list->size(); }
    void next() { ++position; }
    T const& get() const { return (*list)[position]; }

private:
    std::shared_ptr<std::vector<T> const> list;
    std::size_t position = 0;
};
