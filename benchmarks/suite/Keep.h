#pragma once

/// What keeps the compiler from leaving out or moving ahead what is measured.
namespace bench {

/// The value could be any other from here on. For integers and pointers.
template <class Value>
inline void Hide(Value& value) {
    asm volatile("" : "+r"(value));
}

/// All of memory, what `place` points to included, is read here and may have changed afterwards.
inline void Use(const void* place) { asm volatile("" : : "r"(place) : "memory"); }

}  // namespace bench
