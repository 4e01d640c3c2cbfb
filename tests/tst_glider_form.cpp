// The glider panel's form at the default font and at a 1.25 times larger
// one: every label and check box gets at least the room its text asks for,
// inside the two fixed 280-pixel columns.
#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QLayout>
#include <QtTest>

#include "glider.h"

namespace
{
// A label needs its size hint, or when it wraps, its height for the width
// it got. A check box needs the width of its hint; its height is held to 20
// pixels by the form on purpose.
bool fits(const QWidget *widget)
{
    if (const auto *label = qobject_cast<const QLabel *>(widget)) {
        if (label->wordWrap())
            return label->height() >= label->heightForWidth(label->width());
        return label->width() >= label->sizeHint().width() && label->height() >= label->sizeHint().height();
    }
    if (qobject_cast<const QCheckBox *>(widget))
        return widget->width() >= widget->sizeHint().width();
    return true;
}
}

class TstGliderForm : public QObject
{
    Q_OBJECT
private slots:
    void textsFit_data();
    void textsFit();
};

void TstGliderForm::textsFit_data()
{
    QTest::addColumn<double>("scale");
    QTest::newRow("default font") << 1.0;
    QTest::newRow("1.25 times larger") << 1.25;
}

void TstGliderForm::textsFit()
{
    QFETCH(double, scale);
    const QFont original = QApplication::font();
    QFont font = original;
    font.setPointSizeF(original.pointSizeF() * scale);
    QApplication::setFont(font);

    Glider glider;
    glider.resize(1200, 900); // the station's window
    glider.show();
    QVERIFY(QTest::qWaitForWindowExposed(&glider));
    glider.layout()->activate();
    QCoreApplication::processEvents();

    for (const char *column : { "leftRow", "centerRow" }) {
        const auto *layout = glider.findChild<QLayout *>(column);
        QVERIFY2(layout != nullptr, column);
        QCOMPARE(layout->geometry().width(), 280);
    }
    QStringList cut;
    for (QWidget *widget : glider.findChildren<QWidget *>()) {
        if (!widget->isVisible() || widget->objectName() == "ackLabel"
            || widget->objectName() == "queueItemsLabel")
            continue;
        if (!fits(widget))
            cut << QString("%1 (%2 wide, wants %3)")
                       .arg(widget->objectName())
                       .arg(widget->width())
                       .arg(widget->sizeHint().width());
    }
    QApplication::setFont(original);
    QVERIFY2(cut.isEmpty(), qPrintable(cut.join(", ")));
}

QTEST_MAIN(TstGliderForm)
#include "tst_glider_form.moc"
