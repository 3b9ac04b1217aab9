#include "platform/localizer.h"

#include <stdlib.h>

#include <filesystem>

#include "fuzz/support/input.h"
#include "fuzz/support/scratch_directory.h"
#include "platform_default/json_exponents.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text = vtdirect_fuzz::TextOf(data, size);
  static const std::string file = [] {
    ::setenv("FENLOOM_LANGUAGE", "de", 1);
    const auto& scratch = vtdirect_fuzz::Scratch();
    std::filesystem::create_directories(scratch.File("catalogues/cmsinterface"));
    du::SetCatalogueDirectory(scratch.File("catalogues"));
    return scratch.File("catalogues/cmsinterface/cmsinterfaceStrings.de.json");
  }();
  vtdirect_fuzz::WriteScratchFile(file, text);
  du::Localizer localizer("cmsinterface:cmsinterfaceStrings");
  for (const char* key : {"VantryVFSPathProducts", "Greeting"}) {
    vtdirect_fuzz::Look(localizer.LocalizeMessage(key, du::Localizer::ActionOnFailure::GiveKey));
  }
  const std::string once = vtdirect::platform::ShortenJsonExponents(text);
  vtdirect_fuzz::Require(vtdirect::platform::ShortenJsonExponents(once) == once);
  return 0;
}
