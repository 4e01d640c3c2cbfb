#ifndef PACKETTABLEVIEW_H
#define PACKETTABLEVIEW_H

#include <QTableView>

// The packet log's table. Its RSSI bars are index widgets, and a table view
// places every one of them again (up to 200) for each row inserted or
// removed, laying the whole table out first when a layout is pending. This
// view gathers those placements into one per pass of the event loop, made
// before the rows are painted.
class PacketTableView : public QTableView
{
    Q_OBJECT
public:
    explicit PacketTableView(QWidget *parent = nullptr);

protected:
    void updateEditorGeometries() override;

private:
    void placeEditors();

    bool m_placement_posted = false;
    bool m_placing = false;
};

#endif
