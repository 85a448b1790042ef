#include "L10n.h"

#include "Platform/Foundation/NotificationCenter.h"
#include "Prefs.h"

#include <QByteArray>
#include <gtest/gtest.h>

namespace {

void setLanguages(const char* list) {
    qputenv("LANGUAGE", list);
}

void store(const char* language) {
    Prefs::d().setObject(NS::PropertyListValue(language), Prefs::appLanguage);
}

TEST(L10n, AnUnknownKeyIsItsOwnText) {
    EXPECT_EQ(L10n::t("no.such.key"), "no.such.key");
}

TEST(L10n, EveryPortugueseSelectsPortuguese) {
    for (const char* first : {"pt_PT", "pt_BR", "pt", "PT_br"}) {
        setLanguages(first);
        EXPECT_EQ(L10n::detectSystemLanguage(), Language::ptBR) << first;
        EXPECT_EQ(L10n::t("menu.turnOn"), "Ativar") << first;
    }
}

TEST(L10n, OnlyTheFirstPreferredLanguageCounts) {
    setLanguages("en_GB:pt_BR");
    EXPECT_EQ(L10n::t("menu.turnOn"), "Turn On");
    setLanguages("fr:pt_BR");
    EXPECT_EQ(L10n::detectSystemLanguage(), Language::en);
}

TEST(L10n, WithoutPreferredOrStoredLanguageEveryTextIsEnglish) {
    qunsetenv("LANG");
    for (const auto& [key, text] : L10n::table()) {
        EXPECT_EQ(L10n::t(key), text.en);
    }
}

TEST(L10n, TheStoredLanguageGoesBeforeTheDetectedOne) {
    setLanguages("pt_BR");
    store("en");
    EXPECT_EQ(L10n::current(), Language::en);
    EXPECT_EQ(L10n::t("menu.quit"), "Quit Vantorel");
    store("pt-BR");
    setLanguages("en");
    EXPECT_EQ(L10n::t("menu.quit"), "Sair do Vantorel");
}

TEST(L10n, AnUnknownStoredLanguageYieldsTheDetectedOneAnewEachTime) {
    for (const char* stored : {"PT-BR", "fr", "", "en "}) {
        store(stored);
        setLanguages("pt_BR");
        EXPECT_EQ(L10n::current(), Language::ptBR) << stored;
        setLanguages("de");
        EXPECT_EQ(L10n::current(), Language::en) << stored;
    }
}

TEST(L10n, SettingTheLanguageStoresItAndAnnouncesItEachTime) {
    int announced = 0;
    std::string stored;
    auto centre = NS::NotificationCenter::defaultCenter();
    const auto observer = centre.addObserverForName("com.korvex.vantorel.languageDidChange", [&](const auto&) {
        ++announced;
        stored = Prefs::d().stringForKey("appLanguage").value_or("");
    });
    L10n::setCurrent(Language::ptBR);
    EXPECT_EQ(announced, 1);
    EXPECT_EQ(stored, "pt-BR");
    EXPECT_EQ(L10n::t("settings.language"), "Idioma");
    L10n::setCurrent(Language::ptBR);
    EXPECT_EQ(announced, 2);
    L10n::setCurrent(Language::en);
    EXPECT_EQ(announced, 3);
    EXPECT_EQ(stored, "en");
    centre.removeObserver(observer);
}

} // namespace
