#include "Fixtures/WindowTest.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QLayout>
#include <QTest>

#include <array>
#include <ostream>
#include <stdexcept>
#include <utility>

namespace reelkeep {

namespace {

std::invalid_argument notShown(const QString& what)
{
    return std::invalid_argument("not shown, or more than once: " + what.toStdString());
}

} // namespace

std::ostream& operator<<(std::ostream& stream, WindowState state)
{
    constexpr std::array names = {"fresh", "chosen", "analysed", "copying", "all saved"};
    return stream << names.at(static_cast<std::size_t>(state));
}

WindowTest::WindowTest(std::shared_ptr<StagedFiles> stagedFiles)
    : files(std::move(stagedFiles)), content(new ContentView(dialogs.factory(), files)),
      window(std::make_unique<ScrollingWindow>(QStringLiteral("Reelkeep"), content))
{
    window->openAtFirstSize();
    if (!QTest::qWaitForWindowActive(window.get()))
        throw std::runtime_error("the window does not become active");
    resize(1148, 1000);
}

WindowTest::~WindowTest()
{
    files->open(); // Nothing may be left waiting after a test.
    files->releaseCopy();
    window.reset();
    EXPECT_EQ(dialogs.openCount, 0);
}

void WindowTest::settle() const
{
    if (!waitUntil([this] { return content->isUpToDate(); }))
        throw std::runtime_error("the window does not refresh");
    letEventsPass();
}

void WindowTest::resize(int width, int height)
{
    window->resize(width, height);
    settle();
}

void WindowTest::resizeToContent(int width)
{
    resize(width, 400);
    resize(width, content->heightForWidth(width));
}

Button& WindowTest::button(const QString& name) const
{
    auto* found = shownWidget<Button>(*content, name);
    if (!found)
        throw notShown(name);
    return *found;
}

Switch& WindowTest::toggle() const
{
    const QString name = QStringLiteral("Mantener estructura de carpetas");
    auto* found = shownWidget<Switch>(*content, name);
    if (!found)
        throw notShown(name);
    return *found;
}

QWidget& WindowTest::part(const QString& name) const
{
    auto* found = shownWidget<Box>(*content, name);
    if (!found)
        throw notShown(name);
    return *found;
}

TextWidget& WindowTest::text(const QString& searched) const
{
    auto* found = shownWidget<TextWidget>(*content, searched);
    if (!found)
        throw notShown(searched);
    return *found;
}

TextWidget& WindowTest::textIn(const QString& partName, const QString& searched) const
{
    auto* found = shownWidget<TextWidget>(part(partName), searched);
    if (!found)
        throw notShown(searched);
    return *found;
}

QString WindowTest::status() const
{
    return content->findChild<TextWidget*>(QStringLiteral("statusMessage"))->text();
}

void WindowTest::press(const QString& buttonName)
{
    Button& pressed = button(buttonName);
    if (!pressed.isEnabled())
        throw std::logic_error("cannot be pressed: " + buttonName.toStdString());
    QTest::mouseClick(&pressed, Qt::LeftButton);
    settle();
}

void WindowTest::chooseCamera(const std::string& path)
{
    willChoose({path});
    press(QStringLiteral("Elegir camara"));
}

void WindowTest::chooseDestination(const std::string& path)
{
    willChoose({path});
    press(QStringLiteral("Elegir HD de copia"));
}

void WindowTest::addReviewFolders(const std::vector<std::string>& paths)
{
    willChoose(paths);
    press(QStringLiteral("Anadir ubicaciones"));
}

void WindowTest::analyse()
{
    press(scanLabel);
    ASSERT_TRUE(becomesIdle());
}

void WindowTest::pick(const QString& entry)
{
    PopUp* popUp = chooser();
    if (!popUp || popUp->findText(entry) < 0)
        throw notShown(entry);
    popUp->setFocus();
    popUp->showPopup();
    popUp->view()->setCurrentIndex(popUp->model()->index(popUp->findText(entry), 0));
    QTest::keyClick(popUp->view(), Qt::Key_Return);
    settle();
}

bool WindowTest::becomesIdle()
{
    const bool isIdle = waitUntil([this] { return !session().isScanning() && !session().isCopying(); });
    settle();
    return isIdle;
}

void WindowTest::fill(const std::string& card, const std::string& disk, int onCard, int onDisk)
{
    for (int number = 0; number < onCard; ++number) {
        const std::string name = "MVI_" + std::to_string(1000 + number) + ".MOV";
        files->add(card + "/DCIM/100CANON/" + name, 1000);
        if (number < onDisk)
            files->add(disk + "/Julio/" + name, 1000);
    }
}

void WindowTest::enterState(WindowState state)
{
    if (state == WindowState::fresh)
        return;
    const std::string card = "/media/ana/EOS_DIGITAL";
    fill(card, "/media/ana/Disco B", 23, 23);
    files->add(card + "/DCIM/100CANON/MVI_0412.MOV", 1'840'000'000);
    files->add(card + "/DCIM/100CANON/MVI_0413.MOV", 612'400'000);
    files->add(card + "/DCIM/101CANON/MVI_0431.MP4", 3'070'000'000);
    files->add(card + "/DCIM/101CANON/MVI_0432.MP4", 958'100'000);
    chooseCamera(card);
    chooseDestination("/media/ana/Archivo 2026");
    addReviewFolders({"/media/ana/Disco B", "/media/ana/Proyectos/Boda Marta"});
    if (state == WindowState::chosen)
        return;
    analyse();
    if (state == WindowState::analysed)
        return;
    if (state == WindowState::copying)
        files->holdCopy(2);
    press(copyLabel);
    if (state == WindowState::allSaved)
        ASSERT_TRUE(becomesIdle());
    else
        ASSERT_TRUE(waitUntil([this] { return status() == QStringLiteral("Copiando 2/4: MVI_0431.MP4"); }));
    settle();
}

} // namespace reelkeep
