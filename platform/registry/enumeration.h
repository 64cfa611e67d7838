#pragma once
// The place where an enumeration by index stands in a container that can only be walked: the next index, the
// one before, the first and the last are a step away however long the container is.

#include <cstddef>
#include <iterator>

template <class Container>
class Enumeration {
  public:
    using Iterator = typename Container::iterator;

    /// The entry at `index`, which is below the container's size.
    Iterator At(Container &container, std::size_t index) {
        const std::size_t from_end = container.size() - index;
        const std::size_t from_here = index > index_ ? index - index_ : index_ - index;
        if (!known_ || from_here > index || from_here > from_end) {
            const bool front = index <= from_end;
            place_ = front ? container.begin() : container.end();
            index_ = front ? 0 : container.size();
        }
        std::advance(place_, static_cast<std::ptrdiff_t>(index) - static_cast<std::ptrdiff_t>(index_));
        index_ = index;
        known_ = true;
        return place_;
    }

    /// To be told before an entry is erased, and when one came in that may stand before the place.
    void Before_Erase(Container &container, Iterator entry) {
        known_ = known_ && entry == place_ && ++place_ != container.end();
    }
    void Forget() { known_ = false; }

  private:
    Iterator place_{};
    std::size_t index_ = 0;
    bool known_ = false;
};
