#include <reference_suite/programs/road/registry_and_files.h>

#include <reference_suite/installer/install_suite.h>
#include <reference_suite/programs/road/narrator.h>
#include <reference_suite/programs/road/neighbour.h>

#include <kelmara/kelmara.h>

#include <platform/kernel.h>
#include <platform/registry.h>
#include <platform/runtime.h>

#include <cstdio>
#include <cstring>
#include <string>

std::string Folder(int identifier) {
    char path[260];
    GetKelMaraFolderPath(identifier, path);
    return path;
}

std::string Content_Of(const std::string &path) {
    CKMFile file;
    if (file.Open(path.c_str(), false, false) != 0) return "(no file)";
    std::string content(static_cast<std::size_t>(file.GetLength()), '\0');
    Require(file.Read(content.data(), static_cast<long>(content.size())) == 0, "the file can be read");
    file.Close();
    return content;
}

namespace {

constexpr int Content_Folder = 4, Bin_Folder = 7, Root_Folder = 8;
constexpr char Road_Key[] = "Software\\Dunmerit Software\\KelMara\\Road";
constexpr int Target_Exists = 52;

std::string Letter_Path() {
    return Folder(Content_Folder) + "letter.txt";
}

/// Opens the letter anew under a working name and writes a text; the letter itself is not touched yet.
void Begin_To_Save(CKMFile &file, const char *text) {
    Require(file.Open_With_Rollback(Letter_Path().c_str()) == 0, "a file can be opened for saving");
    Require(file.Write(text, static_cast<long>(std::strlen(text)), true) == 0, "the text can be written");
}

} // namespace

void Find_Folders() {
    Begin_Chapter("The suite's folders");
    Require(Folder(Root_Folder) == std::string(Suite_Root) + "\\",
            "the root folder is where the suite was installed");
    Tell("The library finds them in the registry: root %s,", Folder(Root_Folder).c_str());
    Tell("programs %s, content %s.", Folder(Bin_Folder).c_str(), Folder(Content_Folder).c_str());
    Require(Folder(11).empty(), "an identifier without a folder gives an empty path");
}

void Share_Settings() {
    Begin_Chapter("Settings in the registry");
    CRegMaster key;
    Require(key.CreateKey(HKEY_LOCAL_MACHINE, Road_Key), "a key can be made below the suite's");
    Require(key.SetRegEntry("Greeting", "good morning"), "a text can be set");
    Require(key.IncrDword("Visits") == 1, "a counter begins at 1");
    Tell("Process %lu sets \"Greeting\" to \"good morning\" and \"Visits\" to 1.", GetCurrentProcessId());
    Neighbour second("setting");
    const std::string heard = second.Hear();
    Require(second.Wait() == 0, "the second process ends well");
    Tell("Process %d reads \"%s\", counts the visits up and changes the greeting.", second.Id(),
         heard.c_str());
    char greeting[256] = {};
    long visits = 0;
    Require(key.GetRegEntry("Greeting", greeting) && key.GetRegEntry("Visits", &visits),
            "what the second process set can be read");
    Require(visits == 2, "there were two visits");
    Tell("Process %lu reads at once: \"%s\", %ld visits.", GetCurrentProcessId(), greeting, visits);
}

void Save_Files() {
    Begin_Chapter("Files that are saved whole or not at all");
    {
        CKMFile file;
        Begin_To_Save(file, "Dear reader, all is well.");
        Require(Content_Of(Letter_Path()) == "(no file)", "nothing stands under the name before the close");
        Require(file.Close() == 0, "the close gives the file its name");
    }
    const std::string old_content = Content_Of(Letter_Path());
    Tell("%s takes its name only at the close:", Letter_Path().c_str());
    Tell("  \"%s\"", old_content.c_str());
    {
        CKMFile file;
        Begin_To_Save(file, "Another text.");
        Require(file.Close() == Target_Exists, "a save does not take the place of a file that is there");
        Begin_To_Save(file, "A third text.");
        Require(file.Rollback() == 0, "a save can be thrown away");
    }
    Require(Content_Of(Letter_Path()) == old_content, "the old content stands");
    Tell("A save over it is refused, another is rolled back, and the old content stands.");
    Neighbour second("save");
    const std::string working_name = second.Hear();
    Require(!working_name.empty(), "the second process is in the middle of a save");
    second.Kill();
    Require(second.Wait() == -9, "the second process was killed");
    Require(Content_Of(Letter_Path()) == old_content, "the old content stands after the kill");
    Tell("Process %d is killed in the middle of a save; the letter still says:", second.Id());
    Tell("  \"%s\"", Content_Of(Letter_Path()).c_str());
}

int Change_A_Setting() {
    CRegMaster key;
    char greeting[256] = {};
    Require(key.OpenKey(HKEY_LOCAL_MACHINE, Road_Key) && key.GetRegEntry("Greeting", greeting),
            "the first process's setting is there");
    std::printf("%s\n", greeting);
    return key.IncrDword("Visits") == 2 && key.SetRegEntry("Greeting", "good evening") ? 0 : 1;
}

int Save_And_Stay() {
    CKMFile file;
    Begin_To_Save(file, "Half of a lett");
    std::printf("saving\n");
    std::fflush(stdout);
    for (;;) Sleep(1000);
}
