// The document's files, as another program may treat them.

#include "editor/model/document/Document.h"

#include "runtime/project/Project.h"
#include "session/Failures.h"
#include "support/TestFolder.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
constexpr char const* redGamma = "Linear.Gamma.Red";

class DocumentTest : public testing::Test {
protected:
    void set(double number) { document.setNumbers("Set gamma", {redGamma}, number); }
    fs::path const& currentFile() { return document.getProjectFile().getPath(); }

    TestFolder folder;
    fs::path const one = folder.path / "one.json";
    fs::path const two = folder.path / "two.json";
    Document document;
};

/// Another process holds the file until this goes.
class OtherHolder {
public:
    explicit OtherHolder(fs::path const& file)
    {
        int ready[2];
        EXPECT_EQ(::pipe(ready), 0);
        child = ::fork();
        if (child == 0) {
            LockFile const lock(file, "process 1 on other");
            char const byte = lock.isHeld() ? 'y' : 'n';
            [[maybe_unused]] auto const written = ::write(ready[1], &byte, 1);
            ::pause();
        }
        char byte = 'n';
        EXPECT_EQ(::read(ready[0], &byte, 1), 1);
        EXPECT_EQ(byte, 'y');
        ::close(ready[0]);
        ::close(ready[1]);
    }
    ~OtherHolder() { kill(); }
    void kill()
    {
        if (child > 0) {
            ::kill(child, SIGKILL);
            ::waitpid(std::exchange(child, 0), nullptr, 0);
        }
    }

private:
    pid_t child;
};

} // namespace

TEST_F(DocumentTest, UndoneOpeningsLeadBackToTheFileBefore)
{
    set(2.0);
    document.saveProject(one);
    set(3.0);
    document.saveProject(two);
    set(4.0);
    document.openProject(one);
    set(5.0);
    HostCommandStack& history = document.getHistory();
    struct Moment {
        double number;
        fs::path file;
        bool isModified;
    };
    std::vector<Moment> const moments = {
        {5.0, one, true}, {2.0, one, false}, {4.0, two, true}, {3.0, two, false}, {2.0, two, true}};
    auto const check = [&](Moment const& moment) {
        EXPECT_EQ(document.getNumber(redGamma), moment.number);
        EXPECT_EQ(currentFile(), moment.file) << moment.number;
        EXPECT_EQ(document.isModified(), moment.isModified) << moment.number;
    };
    for (Moment const& moment : moments) {
        check(moment);
        history.undo();
    }
    for (auto moment = moments.rbegin(); moment != moments.rend(); ++moment) {
        history.redo();
        check(*moment);
    }
    history.undo();
    history.undo();
    set(6.0); // instead of opening
    EXPECT_EQ(currentFile(), two);
    EXPECT_FALSE(history.canRedo());
}

TEST_F(DocumentTest, FileThatSomebodyElseChangedIsNotReplacedUnasked)
{
    set(2.0);
    document.saveProject(one);
    std::string const others = loadBytes(one) + "\n";
    saveBytes(one, others);
    set(3.0);
    EXPECT_THROW(document.saveProject(one), SaveConflict);
    EXPECT_EQ(loadBytes(one), others);
    EXPECT_TRUE(document.isModified());
    document.saveProject(one, Overwrite::Anything);
    EXPECT_NE(loadBytes(one), others);
    EXPECT_FALSE(document.isModified());
    fs::remove(one);
    EXPECT_EQ(document.getProjectFile().look(), ProjectFile::State::Gone);
    set(4.0);
    document.saveProject(one); // nobody's work is lost
    EXPECT_TRUE(fs::exists(one));
}

TEST_F(DocumentTest, SecondEditorOfAProjectIsToldAndDoesNotSaveUnasked)
{
    document.saveProject(one);
    document.saveProject(two); // leaves the first
    std::string const text = loadBytes(one);
    fs::create_symlink(one, folder.path / "link.json");
    OtherHolder other(folder.path / ".one.json.lock");
    document.openProject(folder.path / "link.json");
    EXPECT_EQ(document.getProjectFile().getOther(), "process 1 on other");
    set(3.0);
    EXPECT_THROW(document.saveProject(currentFile()), SaveConflict);
    EXPECT_EQ(loadBytes(one), text);
    other.kill(); // what a dead one leaves is no lock
    document.saveProject(currentFile());
    EXPECT_NE(loadBytes(one), text);
    document.beginProject();
    EXPECT_EQ(folder.list(), (std::vector<std::string>{"link.json", "one.json", "two.json"}));
}

TEST_F(DocumentTest, SavingThatFailsLeavesFileAndDocumentAsTheyWere)
{
    set(2.0);
    document.saveProject(one);
    std::string const text = loadBytes(one);
    set(3.0);
    EXPECT_THROW(document.saveProject(folder.path / "none" / "one.json"), UsageError);
    fs::create_directory(two);
    EXPECT_THROW(document.saveProject(two), UsageError);
    EXPECT_THROW(document.openProject(two), UsageError);
    saveBytes(two / "bad.json", "{\"format\": 1}");
    EXPECT_THROW(document.openProject(two / "bad.json"), UsageError);
    EXPECT_EQ(loadBytes(one), text);
    EXPECT_EQ(currentFile(), one);
    EXPECT_EQ(document.getNumber(redGamma), 3.0);
    EXPECT_TRUE(document.isModified());
}
