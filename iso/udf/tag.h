// The tag that begins every UDF descriptor: its checks, and how it is brought up to date after a change.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace vantrel {

/// The CRC of descriptors (ECMA-167 7.2.6): polynomial 1021h, initial value 0.
std::uint16_t DescriptorCrc(std::span<const std::uint8_t> bytes);

/// The identifier of the descriptor that begins `bytes`; 0 if they are too few.
std::uint16_t TagIdentifier(std::span<const std::uint8_t> bytes);

/// Checks identifier, checksum, CRC and location of the tag that begins `bytes` (ECMA-167 3/7.2). Returns what is wrong
/// as a sentence without its full stop; empty if nothing is.
std::string TagProblem(std::span<const std::uint8_t> bytes, std::uint16_t identifier, std::uint32_t location);

/// Sets location, CRC and checksum for a descriptor of bytes.size() bytes, at least 16.
void SealTag(std::span<std::uint8_t> bytes, std::uint32_t location);

}  // namespace vantrel
