#include "hosts/cli/translation/xliff_translations.h"

#include <gtest/gtest.h>

namespace vtdirect_cli {

TEST(TranslationInto, PrefersTheLanguageAsItIsWritten) {
  const XliffTranslations translations{{{"de-CH", "upper"}, {"de-ch", "lower"}}, true};
  EXPECT_EQ(TranslationInto(translations, "de-CH"), "upper");
  EXPECT_EQ(TranslationInto(translations, "de-ch"), "lower");
}

TEST(TranslationInto, TakesTheSameLanguageInOtherLetters) {
  const XliffTranslations translations{{{"de-CH", "swiss"}, {"fr", "french"}}, true};
  EXPECT_EQ(TranslationInto(translations, "DE_ch"), "swiss");
  EXPECT_EQ(TranslationInto(translations, "FR"), "french");
}

TEST(TranslationInto, TakesNoOtherLanguage) {
  const XliffTranslations translations{{{"de-CH", "swiss"}, {"fr", "french"}}, true};
  EXPECT_EQ(TranslationInto(translations, "de"), "");
  EXPECT_EQ(TranslationInto(translations, "fr-FR"), "");
  EXPECT_EQ(TranslationInto(translations, ""), "");
}

}  // namespace vtdirect_cli
