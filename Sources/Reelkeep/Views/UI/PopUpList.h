#pragma once

#include <QListView>

class QComboBox;

namespace reelkeep {

/// The open list of a pop-up, drawn like the window: a line for each choice, cut in the middle if it is too long, with
/// a mark at the current one.
class PopUpList : public QListView {
    Q_OBJECT

public:
    explicit PopUpList(const QComboBox* shownPopUp);

protected:
    void showEvent(QShowEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    const QComboBox* popUp;
};

} // namespace reelkeep
