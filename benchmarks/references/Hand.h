#pragma once

#include <cstddef>
#include <string_view>

#include "values/Messages.h"

/// The reference "hand": an encoder and a decoder of exactly the bytes of the library, over plain structs.
namespace bench::hand {

/// Writes into fixed memory; gives the bytes written. Raises `std::length_error` if they do not fit.
std::size_t Encode(const Position& position, unsigned char* bytes, std::size_t capacity);
std::size_t Encode(const ComputedPosition& computed, unsigned char* bytes, std::size_t capacity);
std::size_t Encode(const MobileTransponder& mobile, unsigned char* bytes, std::size_t capacity);

/// Raises `std::runtime_error` for bytes that are not of the message.
void Decode(std::string_view bytes, Position& position);
void Decode(std::string_view bytes, ComputedPosition& computed);
void Decode(std::string_view bytes, MobileTransponder& mobile);

}  // namespace bench::hand
