#pragma once

#include "history/historylist.h"
#include "history/previewcache.h"
#include "support/entries.h"
#include "ui/customtableview.h"
#include "ui/notificationcenter.h"
#include "ui/qsimagecell.h"

#include <gtest/gtest.h>

// A history table over a history list, wired as the main window wires it.
class TableFixture : public ::testing::Test
{
protected:
    void SetUp() override
    {
        view.setModel(&nsac);
        view.setSelectionModel(nsac.selectionModel());
        view.setItemDelegate(&cell);
        view.setNotificationCenter(&center);
        view.setNotificationObject(&controller);
    }

    void addTexts(int count)
    {
        for (int i = 0; i < count; ++i)
            nsac.addObject(textEntry(QStringLiteral("entry %1").arg(i)));
    }

    QPoint rowCenter(int row) const { return view.visualRect(nsac.index(row)).center(); }

    HistoryList nsac;
    PreviewCache previews;
    QSImageCell cell{previews};
    NotificationCenter center;
    QObject controller;
    CustomTableView view;
};
