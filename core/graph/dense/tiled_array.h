// A value for each tiled number (see tiled_grid.h), zero at first. Its pages come from the system
// untouched, so parts of the grid that no search reaches cost no memory.
#pragma once

#include <cassert>
#include <cstddef>
#include <cstdlib>
#include <memory>

template <typename T>
class TiledArray {
  public:
    // False without memory.
    bool allocate(std::size_t size) {
        m_values.reset(static_cast<T*>(std::calloc(size, sizeof(T))));
        m_size = m_values == nullptr ? 0 : size;
        return m_values != nullptr;
    }
    bool allocated() const { return m_values != nullptr; }

    T& operator[](int tiled) const {
        assert(tiled >= 0 && static_cast<std::size_t>(tiled) < m_size);
        return m_values.get()[tiled];
    }
    // For inner loops: a pointer of their own, which stores through it cannot change.
    T* data() const { return m_values.get(); }

  private:
    struct Free {
        void operator()(T* values) const { std::free(values); }
    };

    std::unique_ptr<T[], Free> m_values;
    std::size_t m_size = 0;
};
