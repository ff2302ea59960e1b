#include "screens/vocabulary/vocabulary.h"
#include "tests/screens/vocabulary/marking_table.h"

#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace zelkovanta::screens::vocabulary {
namespace {

using Text = std::optional<std::string>;

struct VerticalRow {
    Text given;
    std::string normalized;
};

TEST(NormalizedVerticalTest, theKnownOnesStandInLowerCaseAndAllElseIsOther) {
    const std::vector<VerticalRow> rows{
        {"dental", "dental"},
        {"medical", "medical"},
        {"veterinary", "veterinary"},
        {"eyecare", "eyecare"},
        {"dermatology", "dermatology"},
        {"therapy", "therapy"},
        {"other", "other"},
        {"DENTAL", "dental"},
        {"EyeCare", "eyecare"},
        {std::nullopt, "other"},
        {"", "other"},
        {" dental", "other"},
        {"dental ", "other"},
        {"podiatry", "other"},
        {"eye-care", "other"},
        {"VETERİNARY", "other"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(normalizedVertical(row.given), row.normalized) << row.given.value_or("(absent)");
    }
}

struct NameRow {
    std::string name;
    Text vertical;
    Text key;
};

TEST(DepartmentVocabularyKeyTest, eachListedSpellingHasItsKey) {
    const std::vector<NameRow> rows{
        {"provider", "dental", "dept-provider-dental"},
        {"doctor", "medical", "dept-provider-medical"},
        {"dr", "eyecare", "dept-provider-eyecare"},
        {"hygienist", "dental", "dept-hygienist"},
        {"hygiene", "dental", "dept-hygienist"},
        {"rdh", "dental", "dept-hygienist"},
        {"assistant", "dental", "dept-assistant"},
        {"assistants", "dental", "dept-assistant"},
        {"da", "dental", "dept-assistant"},
        {"frontdesk", "dental", "dept-frontdesk"},
        {"front", "dental", "dept-frontdesk"},
        {"reception", "dental", "dept-frontdesk"},
        {"receptionist", "dental", "dept-frontdesk"},
        {"nurse", "medical", "dept-nurse"},
        {"nursing", "medical", "dept-nurse"},
        {"rn", "medical", "dept-nurse"},
        {"ma", "medical", "dept-ma"},
        {"medicalassistant", "medical", "dept-ma"},
        {"vettech", "dental", "dept-tech-vet"},
        {"techvet", "eyecare", "dept-tech-vet"},
        {"techeye", "veterinary", "dept-tech-eye"},
        {"eyetech", "veterinary", "dept-tech-eye"},
        {"scribe", "medical", "dept-scribe"},
        {"optician", "eyecare", "dept-optician"},
        {"opticians", "eyecare", "dept-optician"},
        {"esthetician", "dermatology", "dept-esthetician"},
        {"aesthetician", "dermatology", "dept-esthetician"},
        {"aide", "therapy", "dept-aide"},
        {"aides", "therapy", "dept-aide"},
        {"clinical", "medical", "dept-clinical"},
        {"clinicalstaff", "medical", "dept-clinical"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(departmentVocabularyKey(row.name, row.vertical), row.key) << row.name;
    }
}

TEST(DepartmentVocabularyKeyTest, capitalsBlanksAndPunctuationDoNotCount) {
    const std::vector<NameRow> rows{
        {"Front Desk", {}, "dept-frontdesk"},
        {"front-desk", {}, "dept-frontdesk"},
        {"FRONT_DESK", {}, "dept-frontdesk"},
        {"  front\tdesk!\n", {}, "dept-frontdesk"},
        {"Dr.", "dental", "dept-provider-dental"},
        {"D.A.", {}, "dept-assistant"},
        {"R.N.", {}, "dept-nurse"},
        {"M.A.", {}, "dept-ma"},
        {"Medical Assistant", {}, "dept-ma"},
        {"Clinical Staff", {}, "dept-clinical"},
        {"Vet-Tech", {}, "dept-tech-vet"},
        {"«Nurse»", {}, "dept-nurse"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(departmentVocabularyKey(row.name, row.vertical), row.key) << row.name;
    }
}

TEST(DepartmentVocabularyKeyTest, marksThatStandAloneDoNotCountAndWhatLowerCaseMakesIsNoException) {
    const std::vector<NameRow> rows{
        {"RECEPTİON", {}, "dept-frontdesk"},  // The dot becomes a mark of its own, and goes with the punctuation.
        {"nurse\u0301", {}, "dept-nurse"},   {"n\u0308u\u0301r\u0323se", {}, "dept-nurse"},
        {"nurs\u00e9", {}, std::nullopt},  // One letter with its accent is another letter.
        {"AİDE", {}, "dept-aide"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(departmentVocabularyKey(row.name, row.vertical), row.key) << row.name;
    }
}

TEST(DepartmentVocabularyKeyTest, noOtherSpellingHasOne) {
    for (const std::string name :
         {"",        "...",     "frontdesk staff", "front desks", "hygienists",    "nurses",
          "doctors", "drs",     "providers",       "technicians", "techs",         "estheticians",
          "scribes", "nurse 1", "nursé",           "dr2",         "receptionists", "clinic",
          "vet",     "eye",     "tech-vets",       "medical",     "billing"}) {
        EXPECT_EQ(departmentVocabularyKey(name, "dental"), std::nullopt) << name;
    }
}

TEST(DepartmentVocabularyKeyTest, theProviderHasAKeyForEachVerticalInAnyCase) {
    const std::vector<NameRow> rows{
        {"Doctor", "veterinary", "dept-provider-veterinary"},
        {"Doctor", "Veterinary", "dept-provider-veterinary"},
        {"Doctor", "VETERINARY", "dept-provider-veterinary"},
        {"Doctor", std::nullopt, "dept-provider-other"},
        {"Doctor", "", "dept-provider-other"},
        {"Doctor", "podiatry", "dept-provider-other"},
        {"Doctor", "other", "dept-provider-other"},
        {"provider", "therapy", "dept-provider-therapy"},
        {"provider", "dermatology", "dept-provider-dermatology"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(departmentVocabularyKey(row.name, row.vertical), row.key) << row.vertical.value_or("(absent)");
    }
}

TEST(DepartmentVocabularyKeyTest, aPlainTechnicianIsOfTheEyeButAtAVet) {
    for (const std::string name : {"technician", "tech", "Tech."}) {
        EXPECT_EQ(departmentVocabularyKey(name, "veterinary"), "dept-tech-vet");
        EXPECT_EQ(departmentVocabularyKey(name, "Veterinary"), "dept-tech-vet");
        for (const Text& vertical : {Text{"dental"}, Text{"eyecare"}, Text{"other"}, Text{"vet"}, Text{""}, Text{}}) {
            EXPECT_EQ(departmentVocabularyKey(name, vertical), "dept-tech-eye") << vertical.value_or("(absent)");
        }
    }
}

class DepartmentLabelTest : public testing::Test {
protected:
    static records::Office officeWith(std::vector<records::OfficeDepartment> departments) {
        records::Office office;
        office.vertical = "dental";
        office.departments = std::move(departments);
        return office;
    }
    [[nodiscard]] std::string labelOf(const std::optional<records::Office>& office, const std::string& key,
                                      Count count = Count::one) const {
        return departmentLabel(office, key, count, table_);
    }

private:
    MarkingTable table_;
};

TEST_F(DepartmentLabelTest, theVocabularyBeatsTheOfficesOwnLabel) {
    const auto office = officeWith({{"nurse", "Care", "Carers"}, {"provider", "Boss", {}}});
    EXPECT_EQ(labelOf(office, "nurse"), "<dept-nurse>");
    EXPECT_EQ(labelOf(office, "nurse", Count::many), "<dept-nurse-plural>");
    EXPECT_EQ(labelOf(office, "provider"), "<dept-provider-dental>");
    EXPECT_EQ(labelOf(office, "provider", Count::many), "<dept-provider-dental-plural>");
}

TEST_F(DepartmentLabelTest, anUnknownDepartmentShowsTheOfficesLabel) {
    const auto office = officeWith({{"billing", "Accounts", "Accountants"}, {"billing", "Second", {}}});
    EXPECT_EQ(labelOf(office, "billing"), "Accounts");
    EXPECT_EQ(labelOf(office, "billing", Count::many), "Accountants");
}

TEST_F(DepartmentLabelTest, withoutAPluralOfItsOwnTheLabelStands) {
    EXPECT_EQ(labelOf(officeWith({{"billing", "Accounts", {}}}), "billing", Count::many), "Accounts");
}

TEST_F(DepartmentLabelTest, anEmptyChoiceShowsTheKeyCapitalised) {
    EXPECT_EQ(labelOf(officeWith({{"billing desk", "", "Accountants"}}), "billing desk"), "Billing Desk");
    EXPECT_EQ(labelOf(officeWith({{"billing", "Accounts", ""}}), "billing", Count::many), "Billing");
    EXPECT_EQ(labelOf(officeWith({{"billing", "", {}}}), "billing", Count::many), "Billing");
}

TEST_F(DepartmentLabelTest, theOfficesKeyComparesExactly) {
    const auto office = officeWith({{"Billing", "Accounts", {}}, {"x-ray", "Imaging", {}}});
    EXPECT_EQ(labelOf(office, "billing"), "Billing");
    EXPECT_EQ(labelOf(office, "X-RAY"), "X-Ray");
    EXPECT_EQ(labelOf(office, "x-ray"), "Imaging");
}

TEST_F(DepartmentLabelTest, withNoOfficeOrNoListTheKeyIsAllThereIs) {
    EXPECT_EQ(labelOf(std::nullopt, "billing"), "Billing");
    EXPECT_EQ(labelOf(records::Office{}, "billing"), "Billing");
    EXPECT_EQ(labelOf(std::nullopt, "doctor"), "<dept-provider-other>");
    EXPECT_EQ(labelOf(std::nullopt, ""), "");
}

}  // namespace
}  // namespace zelkovanta::screens::vocabulary
