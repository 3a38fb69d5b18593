// Models of VCS that are made of recordings: the same questions have the same answers, and what was not told is named.
#include "SimulatedTool.h"
#include "VcsModelMaker.h"

#include "Process.h"

#include "common/Json.h"

#include <CfDocument.h>
#include <State.h>

#include <gtest/gtest.h>

#include <algorithm>

namespace {

typedef std::vector<std::string> Texts;

const wchar_t MainCf[] = L"main.cf";
const wchar_t StateFile[] = L"main.cf.state.json";

const char Configuration[] = R"(cluster EXCLUS (
	UserNames = { admin = cDRpdx }
	)
system NODE1 (
	)
system NODE2 (
	)
group EVS1 (
	SystemList = { NODE2 = 0, NODE1 = 5 }
	AutoStartList = { NODE2 }
	)
	GenericService EVS1-Gate (
		Password = hIJklm
		ServiceName = gate
		)
	IP EVS1-IP (
		Address = "10.1.2.3"
		)
	Lanman EVS1-Lanman (
		VirtualName = EXVS1
		)
	MountV EVS1-Data (
		MountPath = "F:\\"
		ForceUnmount @NODE1 = NONE
		ForceUnmount @NODE2 = ALL
		)
	NIC EVS1-NIC (
		)
	EVS1-Gate requires EVS1-Lanman
	EVS1-Gate requires EVS1-Data
	EVS1-IP requires EVS1-NIC
	EVS1-Lanman requires EVS1-IP
group Tools (
	SystemList = { NODE1 = 0 }
	)
	requires group EVS1 online local soft
)";

const char States[] = R"({"mode": "rw", "systems": {"NODE2": "EXITED"},
    "resources": {"EVS1-Lanman": {"NODE1": "ONLINE"}, "EVS1-IP": {"NODE1": "ONLINE", "NODE2": "FAULTED"}},
    "probed": {"EVS1-IP": ["NODE1"]}, "frozen": {"groups": ["Tools"], "systems": ["NODE1"]}})";

const Texts Everything = {"hasys -display", "hagrp -display", "hares -display",
                          "hagrp -dep",     "hares -dep",     "haclus -display"};

class VcsModelFromRecording : public ::testing::Test {
protected:
    VcsModelFromRecording() {
        Lay(Configuration, States);
        m_recording.header.cluster = "vcs";
        m_recording.header.computer = "NODE1";
    }

    static void Lay(const std::string& mainCf, const std::string& states) {
        platform::ThisProcess() = platform::Process();
        platform::ThisProcess().files[MainCf] = mainCf;
        platform::ThisProcess().files[StateFile] = states;
    }

    static ToolOutput Run(const std::string& command) {
        const std::size_t blank = command.find(' ');
        return RunSimulatedTool(MainCf, vcssim::Options(), command.substr(0, blank), command.substr(blank + 1));
    }

    recording::RecordedTool& Add(const std::string& command, const std::string& output,
                                 const std::string& errors = std::string(), unsigned exitCode = 0) {
        recording::RecordedTool run;
        run.commandLine = command;
        run.exitCode = exitCode;
        if (!output.empty()) {
            run.output.push_back({false, output});
        }
        if (!errors.empty()) {
            run.output.push_back({true, errors});
        }
        m_recording.tools.push_back(run);
        return m_recording.tools.back();
    }

    void Record(const Texts& commands) {
        for (const std::string& command : commands) {
            const ToolOutput answer = Run(command);
            Add(command, answer.raw, answer.errors, static_cast<unsigned>(answer.exitCode));
        }
    }

    RecordedVcsModel Make() const {
        RecordedVcsModel model = MakeVcsModel(m_recording);
        const vcssim::CfDocument readable(model.mainCf);
        vcssim::ReadState(common::DumpJson(model.states));
        EXPECT_EQ(readable.Groups().size(), model.groups);
        EXPECT_EQ(readable.Systems().size(), model.systems);
        return model;
    }

    // The cluster is the model of what was recorded, which answers as it did.
    void ExpectSameAnswers(const RecordedVcsModel& model) {
        Lay(model.mainCf, common::DumpJson(model.states));
        for (const recording::RecordedTool& run : m_recording.tools) {
            std::string told;
            for (const recording::Printed& printed : run.output) {
                told += printed.text;
            }
            const ToolOutput answer = Run(run.commandLine);
            EXPECT_EQ(answer.raw + answer.errors, told) << run.commandLine << "\n" << model.mainCf;
        }
    }

    recording::Recording m_recording;
};

bool Holds(const Texts& texts, const std::string& text) {
    return std::find(texts.begin(), texts.end(), text) != texts.end();
}

} // namespace

TEST_F(VcsModelFromRecording, WhatIsShownWholeIsAsASnapshotHasIt) {
    Record(Everything);
    const RecordedVcsModel model = Make();
    EXPECT_EQ(model.missing, (Texts{"the recording does not tell 1 secret of \"EVS1-Gate\"",
                                    "1 secret of the cluster's users is not in the model"}));
    EXPECT_EQ(model.systems, 2U);
    EXPECT_EQ(model.groups, 2U);
    EXPECT_EQ(model.resources, 5U);
    EXPECT_EQ(model.states.count("groups"), 0U);
    EXPECT_EQ(model.states["mode"], "rw");
    EXPECT_EQ(model.states["systems"], common::Json({{"NODE2", "EXITED"}}));
    EXPECT_EQ(model.states["probed"], common::Json({{"EVS1-IP", {"NODE1"}}}));
    EXPECT_EQ(model.mainCf.find("hIJklm"), std::string::npos);
    EXPECT_EQ(model.mainCf.find("cDRpdx"), std::string::npos);
    // The secrets apart, which stand as *** in the model.
    for (recording::RecordedTool& run : m_recording.tools) {
        for (recording::Printed& printed : run.output) {
            for (const std::string secret : {"hIJklm", "cDRpdx"}) {
                const std::size_t at = printed.text.find(secret);
                if (at != std::string::npos) {
                    printed.text.replace(at, secret.size(), "***");
                }
            }
        }
    }
    ExpectSameAnswers(model);
}

TEST_F(VcsModelFromRecording, EachQuestionAloneHasTheSameAnswer) {
    for (const char* const question : {"hasys -list",
                                       "hasys -state",
                                       "hasys -state NODE2",
                                       "hasys -value NODE2 SysState",
                                       "hagrp -list",
                                       "hagrp -state",
                                       "hagrp -state EVS1",
                                       "hagrp -state EVS1 -sys NODE1",
                                       "hagrp -state -sys NODE1",
                                       "hagrp -value EVS1 AutoStartList",
                                       "hagrp -dep",
                                       "hagrp -dep Tools",
                                       "hagrp -display Tools",
                                       "hagrp -display EVS1 -attribute AutoStartList SystemList",
                                       "hares -list",
                                       "hares -list Type=IP Group=EVS1",
                                       "hares -list Type=Lanman VirtualName=EXVS1",
                                       "hares -state",
                                       "hares -state EVS1-IP",
                                       "hares -state EVS1-IP -sys NODE1",
                                       "hares -value EVS1-IP Address",
                                       "hares -value EVS1-IP Address NODE1",
                                       "hares -value EVS1-Data ForceUnmount NODE2",
                                       "hares -dep",
                                       "hares -dep EVS1-Gate",
                                       "hares -dep EVS1-Lanman",
                                       "hares -display EVS1-IP",
                                       "hares -display EVS1-Data -attribute ForceUnmount",
                                       "hares -display",
                                       "haclus -value ClusterName",
                                       "haclus -value ReadOnly"}) {
        Lay(Configuration, States);
        m_recording.tools.clear();
        Record({question});
        std::string& told = m_recording.tools[0].output.at(0).text;
        const std::size_t secret = told.find("hIJklm");
        if (secret != std::string::npos) {
            told.replace(secret, 6, "***");
        }
        const RecordedVcsModel model = Make();
        EXPECT_FALSE(model.missing.empty()) << question;
        ExpectSameAnswers(model);
    }
}

TEST_F(VcsModelFromRecording, QuestionsTogetherHaveTheSameAnswers) {
    Record({"hasys -list", "hagrp -list", "hagrp -state EVS1", "hares -list Type=GenericService",
            "hares -display EVS1-Gate -attribute Group", "hares -dep EVS1-Lanman", "hares -dep EVS1-Gate",
            "hares -dep EVS1-NIC", "hares -value EVS1-Data ForceUnmount NODE1",
            "hares -value EVS1-Data ForceUnmount NODE2", "hagrp -display -attribute Frozen TFrozen Enabled"});
    ExpectSameAnswers(Make());
}

TEST_F(VcsModelFromRecording, WhatIsNotToldIsNamed) {
    Record({"hagrp -state EVS1"});
    const RecordedVcsModel model = Make();
    EXPECT_EQ(model.missing,
              (Texts{"the recording does not tell the name of the cluster",
                     "the recording does not list all systems, groups and resources: the model has those that it names",
                     "the recording does not tell all attributes and the state of \"NODE2\" and \"NODE1\"",
                     "the recording does not tell the numbers of the systems of \"EVS1\"",
                     "the recording does not tell all attributes and the dependencies of \"EVS1\""}));
    EXPECT_EQ(model.states["groups"]["EVS1"]["NODE1"], "PARTIAL");
}

TEST_F(VcsModelFromRecording, AResourceOfNoGroupAndTypeHasThoseThatAreMadeForIt) {
    Add("hares -list", "R1\t\tNODE1\r\nR1\t\tNODE2\r\nR2\t\tNODE1\r\nR2\t\tNODE2\r\n");
    Add("hagrp -list", "Unknown\t\tNODE1\r\n");
    const RecordedVcsModel model = Make();
    EXPECT_TRUE(Holds(model.missing, "the recording does not tell the type of \"R1\" and \"R2\": Unknown"));
    EXPECT_TRUE(Holds(model.missing, "the recording does not tell the group of \"R1\" and \"R2\": the group "
                                     "\"Unknown-2\" is made for what has none"));
    m_recording.tools.pop_back(); // shows the group that was made, too
    ExpectSameAnswers(model);
}

TEST_F(VcsModelFromRecording, TheLastAnswerHolds) {
    Record({"hares -display", "hasys -display", "hagrp -display", "hares -dep"});
    Lay(Configuration, R"({"resources": {"EVS1-IP": {"NODE1": "FAULTED"}}})");
    Record({"hares -state EVS1-IP", "hasys -state", "hagrp -state EVS1 -sys NODE2"});
    const RecordedVcsModel model = Make();
    EXPECT_EQ(model.states["resources"]["EVS1-IP"]["NODE1"], "FAULTED");
    EXPECT_EQ(model.states["resources"]["EVS1-IP"]["NODE2"], "OFFLINE");
    EXPECT_EQ(model.states["resources"]["EVS1-Lanman"]["NODE1"], "ONLINE");
    EXPECT_EQ(model.states["systems"], common::Json::object());
}

TEST_F(VcsModelFromRecording, WhatALaterListLacksIsGone) {
    Record({"hares -display", "hares -dep", "hagrp -list"});
    Add("hares -list", "EVS1-IP\t\tNODE1\r\nNew\t\tNODE1\r\n");
    EXPECT_EQ(Make().resources, 2U);
    Add("hares -display",
        "#Resource Attribute System Value\r\nEVS1-IP Group global EVS1\r\nEVS1-IP Type global IP\r\n");
    Add("hagrp -list", "EVS1\t\tNODE1\r\n");
    const RecordedVcsModel model = Make();
    EXPECT_EQ(model.resources, 1U);
    EXPECT_EQ(model.groups, 1U);
    EXPECT_EQ(model.mainCf.find("requires"), std::string::npos);
}

TEST_F(VcsModelFromRecording, ChangesAreHeard) {
    Record(Everything);
    Record({"hares -add EVS1-New GenericService EVS1", "hares -delete EVS1-Gate", "hagrp -add More",
            "haconf -dump -makero"});
    Add("hares -delete EVS1-IP", "", "VCS WARNING V-16-1-11309 Configuration must be ReadWrite\r\n", 1);
    Add("hares -delete EVS1-NIC", "").isRefused = true;
    const RecordedVcsModel model = Make();
    EXPECT_EQ(model.resources, 5U);
    EXPECT_EQ(model.groups, 3U);
    EXPECT_EQ(model.states["mode"], "ro");
    EXPECT_TRUE(
        Holds(model.missing, "the command changed the cluster: of each object the model has what was read last"));
    EXPECT_TRUE(Holds(model.missing, "the recording does not tell all attributes and the states of \"EVS1-New\""));
}

TEST_F(VcsModelFromRecording, ARunThatFailedTellsNothing) {
    const std::string table = "#Resource Attribute System Value\r\nR Group global G\r\n";
    Add("hares -display", table).startError = 2;
    Add("hares -display", table).isRefused = true;
    Add("hares -display", "#usage: hares -display\r\nR Group global G\r\n", "", 2);
    Add("hares -display", "", "VCS ERROR V-16-1-10600 Cannot connect to VCS engine\r\n", 1);
    Add("hares -list", "VCS ERROR V-16-1-10600 Cannot connect to VCS engine\r\n", "", 1);
    Add("hares -list -clus Other", "R\t\tN\r\n");
    Add("hagrp -list", "No such thing\r\n", "", 7);
    const RecordedVcsModel model = Make();
    EXPECT_EQ(model.resources, 0U);
    EXPECT_EQ(model.groups, 0U);
    EXPECT_TRUE(Holds(model.missing,
                      "the recording names no system: the computer that it was made on is taken for the only one"));
    EXPECT_TRUE(
        Holds(model.missing,
              "the recording does not list all systems, groups and resources: the model has those that it names"));
}

TEST_F(VcsModelFromRecording, ToolsAreKnownByWhateverPathAndQuotes) {
    Add("\"C:\\Program Files\\VCS\\bin\\hares.exe\" -display \"R\" -attribute Group",
        "#Resource Attribute System Value\r\nR Group global G\r\n");
    const RecordedVcsModel model = Make();
    EXPECT_EQ(model.resources, 1U);
    EXPECT_EQ(model.groups, 1U);
}

TEST_F(VcsModelFromRecording, BytesStayWhatTheyWere) {
    Add("hagrp -list", "Gr\xC3\x9C" // U+00DC, the byte DC
                       "n\t\tNODE1\r\n");
    EXPECT_NE(Make().mainCf.find("Gr\xDCn"), std::string::npos);
}
