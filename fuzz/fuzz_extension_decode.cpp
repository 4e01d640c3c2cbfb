// Arbitrary bytes as a received extension payload: parsed whole and in two
// calls, then rendered twice into one property model, which must stay a
// well-formed two-level tree of known type names.
#include <QSet>
#include <QStandardItemModel>
#include <QString>
#include <QStringList>

#include <stdint.h>
#include <stdlib.h>

#include "fuzz_app.h"
#include "varda_extension.h"
#include "varda_extension_qt.h"

namespace
{

using fuzz::check;

// The "New item" lines would flood the fuzzer's output.
void dropDebug(QtMsgType type, const QMessageLogContext &, const QString &)
{
    if (type == QtFatalMsg)
        abort();
}

QStringList allTypeNames()
{
    QStringList names;
    for (const char *name : EXT_TYPE_STRINGS)
        names << name;
    return names;
}

void checkTypeStrings(const VardaExtension &ext)
{
    static const QStringList known = allTypeNames();
    const QStringList names = ext.getExtensionTypeStrings();
    int previous = -1;
    for (const QString &name : names) {
        const int code = known.indexOf(name);
        check(code > previous);
        check(ext.hasExtensionType(uint8_t(code)));
        previous = code;
    }
    check(ext.getSource().size() < VRD_CALLSIGN_TEXT_LEN);
    check(ext.hasExtensionType(VRD_EXT_SRC) || ext.getSource().isEmpty());
    check(ext.hasExtensionType(VRD_EXT_TEXT) || ext.getExtensionCmdReply().isEmpty());
    check(ext.getData().size() <= 255);
    check(ext.getExtensionCmdReply().size() <= 255);
}

void checkModel(const QStandardItemModel &model, const QStringList &mustHold)
{
    static const QStringList known = allTypeNames();
    QSet<QString> seen;
    for (int row = 0; row < model.rowCount(); row++) {
        const QStandardItem *type = model.item(row, 0);
        check(type && known.contains(type->text()));
        check(!seen.contains(type->text()));
        seen.insert(type->text());
        check(type->rowCount() == 0 || type->columnCount() == 2);
        QSet<QString> labels;
        for (int child = 0; child < type->rowCount(); child++) {
            const QStandardItem *label = type->child(child, 0);
            check(label && type->child(child, 1));
            check(!labels.contains(label->text()));
            labels.insert(label->text());
            check(label->rowCount() == 0);
        }
    }
    for (const QString &name : mustHold)
        check(seen.contains(name));
}

int childRows(const QStandardItemModel &model)
{
    int rows = 0;
    for (int row = 0; row < model.rowCount(); row++)
        rows += model.item(row, 0)->rowCount();
    return rows;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const QtMessageHandler installed = qInstallMessageHandler(dropDebug);
    (void)installed;
    const uint16_t len = uint16_t(size > 0xFFFF ? 0xFFFF : size);

    VardaExtension whole;
    whole.parse(data, len);
    checkTypeStrings(whole);

    // The same bytes in two calls on one object; the split point comes from
    // the input.
    const uint16_t split = len ? uint16_t(data[0] % (len + 1)) : 0;
    VardaExtension pieces;
    pieces.parse(data, split);
    pieces.parse(data + split, uint16_t(len - split));
    checkTypeStrings(pieces);

    QStandardItemModel model;
    whole.getConvertedExtensionData(&model);
    checkModel(model, whole.getExtensionTypeStrings());
    const int rowsAfterFirst = childRows(model);
    const int typesAfterFirst = model.rowCount();

    whole.getConvertedExtensionData(&model);
    check(childRows(model) == rowsAfterFirst);
    check(model.rowCount() == typesAfterFirst);

    pieces.getConvertedExtensionData(&model);
    checkModel(model, whole.getExtensionTypeStrings() + pieces.getExtensionTypeStrings());
    return 0;
}
