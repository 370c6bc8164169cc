// What the check of a data file finds, and that it agrees with a start about what can start.

#include "check/check.h"

#include <filesystem>
#include <sstream>

#include "frontend/commands.h"
#include "support/kaldra_test.h"

namespace kaldra {
namespace {

using testing::Contains;

class Check : public KaldraTest {
protected:
    // A column of two squares with one of everything, on which there is nothing to say.
    static std::string GoodText(bool steady = false) {
        Problem column = Stack({steady ? "-1 1 0 0 1 1" : "0 1 1 1 1 1", "0 0 0 0 0 0", "0 3 0 0 1 1"});
        column.analysis = steady ? "1 1 0 1 0" : "2 1 10 1 0";
        column.materials = {"1 1 1 2 2 0.3"};
        column.S = {FunctionRows(1, {"-10 0", "0 1"})};
        if (!steady) column.M = {FunctionRows(1, {"-100 1", "100 1"})};
        if (!steady) column.B = {"1 2 0 0 0 0\nsurface\n0 -1\n3 -2"};
        if (!steady) column.times = {"1 1 1 1", "2 1 2 0", "3 1 3 1"};
        column.converge = "30 0.01 4";
        column.edges = {"6 5 2 0 1 0 0"};
        column.flux = {"1 1\n1 -1 0.5 2 0.5"};
        return column.Text();
    }
    static std::string Replaced(std::string text, const std::string& what, const std::string& with) {
        const std::size_t at = text.find(what);
        EXPECT_NE(at, std::string::npos) << what;
        return at == std::string::npos ? text : text.replace(at, what.size(), with);
    }
    // The findings as "LINE! text" for an error and "LINE? text" for a doubt.
    Rows Findings(const std::string& text) const {
        Rows rows;
        for (const Finding& f : CheckDataFile(WriteFile("case.kdr", text)).list) {
            rows.push_back(FormatText("%d%s %s", f.line, f.severity == Severity::Error ? "!" : "?", f.text));
        }
        return rows;
    }
    // A start of the same file agrees with the check, but for what only the solution of the system can tell.
    void ExpectAgreement(const std::string& text, const std::string& what) {
        const Rows findings = Findings(text);
        const bool ran = OpenDataFile(WriteFile("case.kdr", text)) && RunOpened().result == 1;
        const std::vector<int> messages = TakeMessages();
        if (!ran && !messages.empty() && (messages[0] == 1170 || messages[0] == 1171)) return;
        EXPECT_EQ(ran, !HasErrors(CheckDataFile(Path("case.kdr"))))
            << what << '\n'
            << testing::PrintToString(findings) << testing::PrintToString(messages);
    }
};

struct Fault {
    const char* what;  // of the good text,
    const char* with;  // replaced by this
    Rows findings;     // how they begin, and nothing else
};

TEST_F(Check, FindsFaultsWithTheirLines) {
    EXPECT_EQ(Findings(GoodText()), Rows{});
    EXPECT_EQ(Findings(GoodText(true)), Rows{});
    const std::string wide = "1 1 1 1" + std::string(94, ' ') + "x";
    const std::vector<Fault> faults{
        {"KALDRA 4.0", "KALDRA 3.9", {"2! the version is below 4.0"}},
        {"KALDRA 4.0", "NODE 4.0", {}},
        {"POLE 0", "POLE 1\nPOLE 0", {"49? this is no position of a pole, which then lies at 0 0: POLE 0"}},
        {"FILEINFO",
         "FILE",
         {"0! no line begins with FILEINFO",
          "1! no section begins so; passed over with all up to the next section, 2 lines"}},
        {"2 1 10 1 0", "3 1 10 1 0", {"9! the analysis type is 3"}},
        {"2 1 10 1 0", "2 4 -10 1 0", {"9? the view is 4", "9? the latent heat is negative"}},
        {"2 1 10 1 0", "2 1 1x0 1 0", {"9! field 4 of this row of ANALYSIS"}},
        {"30 0.01 4", "2 0 0", {"11? maxIterations is 2", "11? the tolerance is 0", "11? maxPhasePoints is 0"}},
        {"1 1 1 1",
         "1 1 1.23456 1",
         {"13? step 1 ends at 1.23456", "13? the elapsed time 1.23456 of step 1",
          "14? step 2 ends at 2, but its increment 1 after 1.23456 makes 2.23456"}},
        {"1 1 1 1", wide.c_str(), {"13? the line is longer than 94 characters"}},
        {"3 1 3 1",
         "3 0 2 no",
         {"15? field 4 of this row of TIME is no number and counts as missing: 3 0 2 no",
          "15? step 3 has the increment 0"}},
        {"3 1 3 1",
         "3 4 6 0",
         {"15? the last step is not saved", "34? boundary function 1 has points from 0 to 3 and is read outside them"}},
        {"TIME 3", "TIME 4", {"16! TIME ends behind 3 rows of 4"}},
        {"TIME 3", "TIME 2", {"14? the last step is not saved", "15! TIME has 1 row more than it counts"}},
        {"1 1 1 2 2 0.3",
         "1 1 0 0 2 1.3",
         {"17! material 1 has no S function", "17? material 1 has a heat capacity", "17? material 1 has the volumetric",
          "24? nothing uses S function 1"}},
        {"1 1 1 2 2 0.3",
         "1 2 3 2 2 0.3",
         {"17! material 1 names K function 2, and there are 1", "17! material 1 names S", "19? nothing uses K",
          "24? nothing uses S"}},
        {"1 1 1 2 2 0.3",
         "2 1 1 2 2 0.3",
         {"16? material 1 has no row", "17! number 2 of MATERIAL is not within its count, 1 to 1",
          "18! MATERIAL ends behind 1 row of 1", "19? nothing uses", "24? nothing uses", "45! no element takes part"}},
        {"-100 2\n100 2",
         "100 2\n-100 0",
         {"22! x of this point is -100 and does not rise above the 100", "22? a conductivity of 0"}},
        {"-10 0\n0 1", "-10 1.5\n0 1", {"26? an unfrozen part of 1.5 is taken as 1", "27? the unfrozen part falls"}},
        {"-10 0\n",
         "",
         {
             "27! the function in line 24 ends behind 1 point of 2",
         }},
        {"1 2 0 0 0 0\nsurface", "1 2 0 0 0 0 1\nsurface", {}},
        {"surface\n0 -1", "surface\n2 -1", {"34? boundary function 1 has points from 2 to 3"}},
        {"3 0.00000000E+000 1",
         "4 0.00000000E+000 1",
         {"41! number 4 of NODE follows number 2", "42! number 4 of NODE fo"}},
        {"3 0.00000000E+000 1.00000000E+000 0 0",
         "3 0.00000000E+000 1.00000000E+000 5 0",
         {"41? node 3 is free (type 0)"}},
        {"0 3 0 0 1 1",
         "0 4 2 0 2 1",
         {"43? node 5 has the flag 2", "43! node 5 names B function 2, and there are 1",
          "43? node 5 has boundary type 4", "53? node 5 of the edge is not of type 3"}},
        {"0 1 1 1 1 1",
         "0 1 1 100 1 1",
         {"39? node 1 is read with type 1, functions 1 and 10 and flag 0", "39! node 1 names M function 10"}},
        {"4 3 1 2 0", "2 1 3 4 0", {"46! the area of element 1 is zero or negative"}},
        {"4 3 1 2 0", "4 3 1 7 0", {"40? node 2 belongs to no element", "46! element 1 has node 7, and there are 6"}},
        {"4 3 1 2 0 0 0 0 1 4 1", "4 3 1 2 0 0 0 0 2 5 0", {"46! element 1 has material 2, and there are 1"}},
        {"4 3 1 2 0 0 0 0 1 4 1",
         "4 3 1 2 0 0 0 0 1 3 0",
         {"46? element 1 has 3 integration points",
          "46? element 1 has the "
          "thickness 0"}},
        {"4 3 1 2 0", "4 0 1 2 0", {"46? element 1 has no node at its corner 2", "50? flux section 1 crosses"}},
        {"1 -1 0.5 2 0.5", "1 5 5 6 6", {"50? flux section 1 crosses no element"}},
        {"6 5 2 0 1 0 0",
         "6 3 2 0 1 0 0\nmore",
         {"53? node 3 of the edge is not of type 3", "53? nodes 6 and 3 are no side",
          "54? behind the rows of qBOUNDARY nothing is read, and here follows 1 line"}},
        {"qBOUNDARY 1\n", "", {"0! the section qBOUNDARY is missing", "52! FLUX has 1 row more than it counts"}},
        {"POLE 0", "POLE", {"48! field 1 of this row of POLE"}},
        {"POLE 0",
         "\nPOLE 0\nCONVERGE\n9 1 4",
         {"48! a blank line stands where a section should begin",
          "50? CONVERGE stands a second time: what line 10 gives is lost"}},
    };
    for (const Fault& fault : faults) {
        const std::string text = Replaced(GoodText(), fault.what, fault.with);
        Rows found = Findings(text);
        for (std::size_t i = 0; i < std::min(found.size(), fault.findings.size()); ++i) {
            found[i] = found[i].substr(0, fault.findings[i].size());
        }
        EXPECT_EQ(found, fault.findings) << fault.what << " -> " << fault.with;
        ExpectAgreement(text, fault.with);
    }
}

TEST_F(Check, KnowsWhatASteadyStateNeeds) {
    const std::string loose = Replaced(Replaced(GoodText(true), "-1 1 0 0", "-1 2 0 0"), "-1 1 0 0", "-1 2 0 0");
    EXPECT_THAT(Findings(loose), Contains(testing::HasSubstr("has a prescribed temperature")));
    const std::string driven = Replaced(
        Replaced(GoodText(true), "BFUNCTION 0", "BFUNCTION 1\n1 2 0 0 0 0\nf\n0 1\n1 1"), "-1 1 0 0", "-1 1 1 0");
    EXPECT_THAT(Findings(driven), ElementsAre(testing::StartsWith("32! node 1 has a B function")));
}

// Every line is left out, doubled, emptied, cut in half and turned into words, one after the other.
TEST_F(Check, AgreesWithAStartOnAnyLine) {
    for (const bool steady : {true, false}) {
        Rows lines;
        std::istringstream text(GoodText(steady));
        for (std::string line; std::getline(text, line);) lines.push_back(line);
        for (std::size_t changed = 0; changed < lines.size(); ++changed) {
            const std::string& line = lines[changed];
            for (const std::string& with : {std::string(), line + '\n' + line, std::string("\n"),
                                            line.substr(0, line.size() / 2), std::string("some words of text")}) {
                std::string whole;
                for (std::size_t i = 0; i < lines.size(); ++i) {
                    const std::string& part = i == changed ? with : lines[i];
                    whole += part.empty() || part == "\n" ? part : part + '\n';
                }
                ExpectAgreement(whole, FormatText("line %d as '%s'", static_cast<std::int64_t>(changed) + 1, with));
            }
        }
    }
}

TEST_F(Check, TellsOfManyFaultsOnce) {
    Problem many = Column();
    for (int i = 0; i < 30; ++i) many.Node(9 + i, 9);
    Rows found = Findings(many.Text());
    EXPECT_THAT(found, testing::SizeIs(findingsPerKind));
    EXPECT_THAT(found.back(), testing::EndsWith("node 16 belongs to no element (and 21 more like it)"));
    found = {};
    for (const Finding& f : CheckDataFile(Path("none.kdr")).list) found.push_back(f.text);
    EXPECT_THAT(found, ElementsAre("the file cannot be opened"));
    EXPECT_THAT(Findings(Replaced(GoodText(), "KFUNCTION 1", "KFUNCTION 256")),
                Contains("18! behind KFUNCTION stands no "
                         "count from 0 to 255: KFUNCTION 256"));
}

}  // namespace
}  // namespace kaldra
