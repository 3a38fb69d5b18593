#include "ToolTest.h"

#include "Words.h"
#include "common/Files.h"

const char* const ToolTest::Sample = "include \"types.cf\"\n"
                                     "\n"
                                     "cluster C1 (\n"
                                     "\t)\n"
                                     "\n"
                                     "system NODE1 (\n"
                                     "\t)\n"
                                     "\n"
                                     "system NODE2\n"
                                     "\n"
                                     "group G (\n"
                                     "\tSystemList = { NODE1 = 0, NODE2 = 1 }\n"
                                     "\tAutoStartList = { NODE1, NODE2 }\n"
                                     "\t)\n"
                                     "\n"
                                     "\tIP G-IP (\n"
                                     "\t\tAddress = \"10.1.2.3\"\n"
                                     "\t\tMACAddress @NODE1 = \"00-01\"\n"
                                     "\t\tMACAddress @NODE2 = \"00-02\"\n"
                                     "\t\t)\n"
                                     "\n"
                                     "\tLanman G-Lanman (\n"
                                     "\t\tVirtualName = VSERVER\n"
                                     "\t\tIPResName = G-IP\n"
                                     "\t\t)\n"
                                     "\n"
                                     "\tMountV G-Mount (\n"
                                     "\t\tMountPath = \"F:\\\\Mail Data\\\\\"\n"
                                     "\t\t)\n"
                                     "\n"
                                     "\tNIC G-NIC (\n"
                                     "\t\t)\n"
                                     "\n"
                                     "\tRegRep G-RegRep (\n"
                                     "\t\tKeys = { \"HKLM\\\\A B\" = \"\", \"HKLM\\\\C\" = \"IgnoreSubKeys:Yes\" }\n"
                                     "\t\tExcludeKeys = { one, two }\n"
                                     "\t\t)\n"
                                     "\n"
                                     "\tG-IP requires G-NIC\n"
                                     "\tG-Lanman requires G-IP\n"
                                     "\tG-RegRep requires G-Mount\n"
                                     "\n"
                                     "group H (\n"
                                     "\tSystemList = { NODE2 = 0 }\n"
                                     "\t)\n"
                                     "\n"
                                     "\tGenericService H-Service (\n"
                                     "\t\tServiceName = Spooler\n"
                                     "\t\tCritical = 0\n"
                                     "\t\t)\n";

ToolTest::ToolTest() {
    m_environment.mainCf = Path(L"");
    m_environment.options.lineEnd = "\n";
    WriteFile(L"", Sample);
    WriteFile(L".state.json", R"({"mode": "rw", "resources": {"G-Mount": {"NODE1": "ONLINE"}}})");
}

std::wstring ToolTest::Path(const std::wstring& suffix) const {
    return m_folder.File(L"main.cf" + suffix);
}

void ToolTest::WriteFile(const std::wstring& suffix, const std::string& bytes) const {
    common::WriteWholeFile(Path(suffix), bytes);
}

std::string ToolTest::ReadFile(const std::wstring& suffix) const {
    return common::ReadWholeFile(Path(suffix));
}

bool ToolTest::HasFile(const std::wstring& suffix) const {
    return common::FileExists(Path(suffix));
}

std::string ToolTest::Run(const std::string& tool, const std::string& arguments) {
    return RunWith(tool, harness::Words(arguments));
}

std::string ToolTest::RunWith(const std::string& tool, const std::vector<std::string>& arguments) {
    const vcssim::Output output = vcssim::RunCommand(tool, arguments, m_environment);
    m_exitCode = output.ExitCode();
    m_pieces = output.Pieces();
    return output.Joined();
}
