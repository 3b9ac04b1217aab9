#pragma once

#include <expat.h>

#include <cstddef>

namespace lxservices::cms_interface::vantry {

/// What a parser made here may take of memory, in bytes. Real schemas need a thousandth of it.
inline constexpr std::size_t mostXmlMemory = std::size_t{64} << 20;

/// A parser whose memory is bounded, whatever the document holds: a tag of any length, any number of different
/// names, any depth. Beyond the bound it ends with XML_ERROR_NO_MEMORY. One at a time on a thread.
/// @return null when there is no memory; to be freed by XML_ParserFree
[[nodiscard]] XML_Parser MakeBoundedXmlParser();

}  // namespace lxservices::cms_interface::vantry
