#ifndef ar_h
#define ar_h

#include <cstddef>
#include <cstdint>
#include <map>

/** Reference-counting handle with external counts.
 *
 *  The counts live in one process-wide registry per type (object address to count), not in the object, so any code
 *  that holds a raw pointer can make a new counted handle from it at any time. When the last handle of an object
 *  goes away the object is destroyed. The registry is not locked: objects held through ar<> belong to one thread at
 *  a time. */
template <class T>
class ar
{
public:
  ar() = default;
  /** Takes part in the ownership of the object (which may already be held by other handles). */
  ar(T * object)
    : m_object(object)
  {
    acquire(m_object);
  }
  ar(const ar & other)
    : m_object(other.m_object)
  {
    acquire(m_object);
  }
  ar(ar && other) noexcept
    : m_object(other.m_object)
  {
    other.m_object = nullptr;
  }
  ~ar() { release(m_object); }

  ar &
  operator=(const ar & other)
  {
    return assign(other.m_object);
  }
  ar &
  operator=(ar && other) noexcept
  {
    if (this != &other)
    {
      T * old = m_object;
      m_object = other.m_object;
      other.m_object = nullptr;
      release(old);
    }
    return *this;
  }
  ar &
  operator=(T * object)
  {
    return assign(object);
  }

  T *
  get() const
  {
    return m_object;
  }
  T *
  operator->() const
  {
    return m_object;
  }
  T &
  operator*() const
  {
    return *m_object;
  }
  bool
  isNull() const
  {
    return m_object == nullptr;
  }
  explicit operator bool() const { return m_object != nullptr; }

  friend bool
  operator==(const ar & a, const ar & b)
  {
    return a.m_object == b.m_object;
  }
  friend bool
  operator!=(const ar & a, const ar & b)
  {
    return a.m_object != b.m_object;
  }

  /** Number of handles that hold the object; 0 for an object not held (or null). */
  static std::int32_t
  count(const T * object)
  {
    const auto & entries = registry();
    auto it = entries.find(object);
    return it == entries.end() ? 0 : it->second;
  }
  /** Number of objects of this type held by handles in the process. */
  static std::size_t
  registrySize()
  {
    return registry().size();
  }

private:
  ar &
  assign(T * object)
  {
    if (object != m_object)
    {
      acquire(object);
      T * old = m_object;
      m_object = object;
      release(old);
    }
    return *this;
  }

  static void
  acquire(T * object)
  {
    if (object != nullptr)
    {
      ++registry()[object];
    }
  }

  static void
  release(T * object)
  {
    if (object == nullptr)
    {
      return;
    }
    auto & entries = registry();
    auto it = entries.find(object);
    if (it == entries.end())
    {
      return;
    }
    if (--it->second <= 0)
    {
      entries.erase(it);
      delete object;
    }
  }

  // Never destroyed, so that handles released during static destruction still find their counts.
  static std::map<const T *, std::int32_t> &
  registry()
  {
    static auto * entries = new std::map<const T *, std::int32_t>();
    return *entries;
  }

  T * m_object{ nullptr };
};

#endif
