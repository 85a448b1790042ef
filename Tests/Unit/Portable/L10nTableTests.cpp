#include "L10n.h"

#include <array>
#include <gtest/gtest.h>

namespace {

struct Expected {
    const char* key;
    const char* en;
    const char* pt;
};

constexpr Expected everyText[] = {
    {"menu.statusOn", "Vantorel is on", "Vantorel ativado"},
    {"menu.statusOff", "Vantorel is off", "Vantorel desativado"},
    {"menu.turnOn", "Turn On", "Ativar"},
    {"menu.turnOff", "Turn Off", "Desativar"},
    {"menu.settings", "Settings\xE2\x80\xA6", "Ajustes\xE2\x80\xA6"},
    {"menu.quit", "Quit Vantorel", "Sair do Vantorel"},
    {"welcome.title", "Welcome to Vantorel", "Bem-vindo ao Vantorel"},
    {"welcome.subtitle", "Choose your language", "Escolha seu idioma"},
    {"welcome.continue", "Continue", "Continuar"},
    {"welcome.hint", "One click on the cup keeps your Mac awake.",
     "Um clique na x\xC3\xAD"
     "cara mant\xC3\xA9m seu Mac acordado."},
    {"settings.title", "Vantorel Settings", "Ajustes do Vantorel"},
    {"settings.launchAtLogin", "Launch at login", "Iniciar com o Mac"},
    {"settings.loginHint", "Move Vantorel to the Applications folder to enable this.",
     "Mova o Vantorel para a pasta Aplicativos para ativar isto."},
    {"settings.schedule", "Automatic schedule", "Agenda autom\xC3\xA1tica"},
    {"settings.scheduleOn", "Turn on at", "Ativar \xC3\xA0s"},
    {"settings.scheduleOff", "Turn off at", "Desativar \xC3\xA0s"},
    {"settings.autoUpdate", "Update automatically", "Atualizar automaticamente"},
    {"settings.autoUpdateHint", "Checks korvex.example daily and installs new versions on its own.",
     "Verifica o korvex.example diariamente e instala as novidades sozinho."},
    {"settings.language", "Language", "Idioma"},
};

TEST(L10nLanguage, IsPortugueseWhereTheFirstOneIsInAnyLetters) {
    for (const char* first : {"pt", "pt-BR", "pt-PT", "PT-BR", "Pt", "pT_pt"}) {
        EXPECT_EQ(L10n::detectSystemLanguage({first, "en"}), Language::ptBR) << first;
    }
    for (const char* first : {"en", "fr", "p", "", "xpt"}) {
        EXPECT_EQ(L10n::detectSystemLanguage({first, "pt-BR"}), Language::en) << first;
    }
    EXPECT_EQ(L10n::detectSystemLanguage({}), Language::en);
}

TEST(L10nTable, HoldsEveryTextInBothLanguages) {
    EXPECT_EQ(L10n::table().size(), 19U);
    for (const auto& expected : everyText) {
        const auto row = L10n::table().find(expected.key);
        ASSERT_NE(row, L10n::table().end()) << expected.key;
        EXPECT_EQ(row->second.en, expected.en);
        EXPECT_EQ(row->second.pt, expected.pt);
    }
}

TEST(L10nTable, IsBuiltOnce) {
    EXPECT_EQ(&L10n::table(), &L10n::table());
}

TEST(L10nTableDeathTest, AKeyThatComesTwiceIsFatal) {
    const std::array<std::pair<std::string_view, L10n::Text>, 2> rows = {{{"a", {"1", "2"}}, {"a", {"3", "4"}}}};
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(L10n::makeTable(rows), "twice");
}

TEST(L10nTable, LanguagesAreStoredAndOfferedUnderTheirNames) {
    EXPECT_STREQ(L10n::rawValue(Language::en), "en");
    EXPECT_STREQ(L10n::rawValue(Language::ptBR), "pt-BR");
    EXPECT_STREQ(L10n::label(Language::en), "English");
    EXPECT_STREQ(L10n::label(Language::ptBR), "Portugu\xC3\xAAs (Brasil)");
}

TEST(L10nTable, TheChangeIsAnnouncedUnderTheBundleIdentifier) {
    EXPECT_EQ(L10n::languageDidChange(), "com.korvex.vantorel.languageDidChange");
}

} // namespace
