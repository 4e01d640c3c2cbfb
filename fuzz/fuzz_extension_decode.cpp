// Arbitrary bytes as a received extension payload: parsed whole and in two
// calls, then rendered twice into one property model, which must stay a
// well-formed two-level tree of known type names.
#include <QSet>
#include <QStandardItemModel>
#include <QString>
#include <QStringList>

#include <stdint.h>
#include <stdlib.h>

#include "varda_extension.h"
#include "varda_extension_qt.h"

namespace
{

void require(bool condition)
{
    if (!condition)
        abort();
}

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
        require(code > previous);
        require(ext.hasExtensionType(uint8_t(code)));
        previous = code;
    }
    require(ext.getSource().size() < VRD_CALLSIGN_TEXT_LEN);
    require(ext.hasExtensionType(VRD_EXT_SRC) || ext.getSource().isEmpty());
    require(ext.hasExtensionType(VRD_EXT_TEXT) || ext.getExtensionCmdReply().isEmpty());
    require(ext.getData().size() <= 255);
    require(ext.getExtensionCmdReply().size() <= 255);
}

void checkModel(const QStandardItemModel &model, const QStringList &mustHold)
{
    static const QStringList known = allTypeNames();
    QSet<QString> seen;
    for (int row = 0; row < model.rowCount(); row++) {
        const QStandardItem *type = model.item(row, 0);
        require(type && known.contains(type->text()));
        require(!seen.contains(type->text()));
        seen.insert(type->text());
        require(type->rowCount() == 0 || type->columnCount() == 2);
        QSet<QString> labels;
        for (int child = 0; child < type->rowCount(); child++) {
            const QStandardItem *label = type->child(child, 0);
            require(label && type->child(child, 1));
            require(!labels.contains(label->text()));
            labels.insert(label->text());
            require(label->rowCount() == 0);
        }
    }
    for (const QString &name : mustHold)
        require(seen.contains(name));
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
    require(childRows(model) == rowsAfterFirst);
    require(model.rowCount() == typesAfterFirst);

    pieces.getConvertedExtensionData(&model);
    checkModel(model, whole.getExtensionTypeStrings() + pieces.getExtensionTypeStrings());
    return 0;
}
