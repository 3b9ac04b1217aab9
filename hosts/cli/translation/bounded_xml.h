#pragma once

#include <expat.h>

#include <memory>

namespace vtdirect_cli {

using XmlParser = std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)>;

/// What a parser made here may take of memory. Files that people translate need a hundredth of it.
inline constexpr std::size_t mostXmlMemory = std::size_t{16} << 20U;

/// What parts the namespace from the local name in the names that the parser gives.
inline constexpr char namespaceEnd = '\n';

/// A parser with namespaces whose memory is bounded, whatever the file holds: a tag of any length, any number
/// of different names, any depth. Beyond the bound it ends with XML_ERROR_NO_MEMORY. One at a time on a
/// thread.
/// @return null when there is no memory
[[nodiscard]] XmlParser MakeBoundedXmlParser();

}  // namespace vtdirect_cli
