#include "Platform/Foundation/Locale.h"

#include <array>
#include <cstdlib>
#include <gtest/gtest.h>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace {

using Tags = std::vector<std::string>;

/// The environment without a word about languages, put back at the end.
class Locale : public testing::Test {
protected:
    Locale() {
        for (const char* name : names) {
            const char* value = std::getenv(name);
            before_[name] = value ? std::optional<std::string>(value) : std::nullopt;
            unsetenv(name);
        }
    }
    ~Locale() override {
        for (const auto& [name, value] : before_) {
            value ? setenv(name.c_str(), value->c_str(), 1) : unsetenv(name.c_str());
        }
    }

    static void set(const char* name, const char* value) { setenv(name, value, 1); }
    static Tags tagsOf(const char* language) {
        set("LANG", language);
        return NS::Locale::preferredLanguages();
    }

private:
    static constexpr std::array names = {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"};
    std::map<std::string, std::optional<std::string>> before_;
};

TEST_F(Locale, NothingSetMeansNoLanguage) {
    EXPECT_EQ(NS::Locale::preferredLanguages(), Tags());
}

TEST_F(Locale, NamesBecomeTags) {
    EXPECT_EQ(tagsOf("pt_BR.UTF-8"), Tags{"pt-BR"});
    EXPECT_EQ(tagsOf("pt_BR"), Tags{"pt-BR"});
    EXPECT_EQ(tagsOf("en"), Tags{"en"});
    EXPECT_EQ(tagsOf("EN_gb"), Tags{"en-GB"});
    EXPECT_EQ(tagsOf("fil_PH.utf8"), Tags{"fil-PH"});
    EXPECT_EQ(tagsOf("es_419"), Tags{"es-419"});
}

TEST_F(Locale, ModifiersBecomeScriptsAndVariants) {
    EXPECT_EQ(tagsOf("sr_RS@latin"), Tags{"sr-Latn-RS"});
    EXPECT_EQ(tagsOf("sr_RS.UTF-8@latin"), Tags{"sr-Latn-RS"});
    EXPECT_EQ(tagsOf("sr@latin"), Tags{"sr-Latn"});
    EXPECT_EQ(tagsOf("uz_UZ@cyrillic"), Tags{"uz-Cyrl-UZ"});
    EXPECT_EQ(tagsOf("ks_IN@devanagari"), Tags{"ks-Deva-IN"});
    EXPECT_EQ(tagsOf("ca_ES@valencia"), Tags{"ca-ES-valencia"});
    EXPECT_EQ(tagsOf("de_DE@euro"), Tags{"de-DE"});
}

TEST_F(Locale, WhatNamesNoLanguageAddsNothing) {
    for (const char* name :
         {"C",      "POSIX",  "C.UTF-8", "C.utf8", "c",        "_BR",   "p_BR",  "port_BR",
          "pt_",    "pt_B",   "pt_BRA",  "pt_12",  "pt_BR_x",  "p1_BR", "pt-BR", "/usr/share/locale/pt",
          ".UTF-8", "@latin", " pt",     "pt_B1",  "p\xc3\xa9"}) {
        EXPECT_EQ(tagsOf(name), Tags()) << name;
    }
}

TEST_F(Locale, TheFirstLocaleThatIsSetCounts) {
    set("LANG", "en_GB.UTF-8");
    EXPECT_EQ(NS::Locale::preferredLanguages(), Tags{"en-GB"});
    set("LC_MESSAGES", "fr_FR.UTF-8");
    EXPECT_EQ(NS::Locale::preferredLanguages(), Tags{"fr-FR"});
    set("LC_ALL", "pt_PT.UTF-8");
    EXPECT_EQ(NS::Locale::preferredLanguages(), Tags{"pt-PT"});
    set("LC_ALL", "");
    set("LC_MESSAGES", "");
    EXPECT_EQ(NS::Locale::preferredLanguages(), Tags{"en-GB"});
}

TEST_F(Locale, TheListOfLanguagesComesFirst) {
    set("LANG", "en_GB.UTF-8");
    set("LANGUAGE", "pt_BR:de:C:nonsense_!::fr_FR");
    EXPECT_EQ(NS::Locale::preferredLanguages(), (Tags{"pt-BR", "de", "fr-FR", "en-GB"}));
}

TEST_F(Locale, DuplicatesAreRemoved) {
    set("LANG", "pt_BR.UTF-8");
    set("LANGUAGE", "en:pt_BR:en:pt");
    EXPECT_EQ(NS::Locale::preferredLanguages(), (Tags{"en", "pt-BR", "pt"}));
}

TEST_F(Locale, TheListIsIgnoredWhereNoLanguageIsWanted) {
    set("LANGUAGE", "pt_BR");
    for (const char* name : {"C", "POSIX"}) {
        EXPECT_EQ(tagsOf(name), Tags()) << name;
    }
    set("LC_ALL", "C");
    EXPECT_EQ(tagsOf("en_GB"), Tags());
}

TEST_F(Locale, TheListCountsInALocaleThatIsOnlyLikeC) {
    set("LANGUAGE", "pt_BR");
    EXPECT_EQ(tagsOf("C.UTF-8"), Tags{"pt-BR"});
    unsetenv("LANG");
    EXPECT_EQ(NS::Locale::preferredLanguages(), Tags{"pt-BR"});
}

} // namespace
