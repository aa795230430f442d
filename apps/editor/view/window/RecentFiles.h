#pragma once

#include <QObject>
#include <QStringList>
#include <filesystem>
#include <memory>

class QMenu;

/// The pictures and projects that were open last, as a menu. Those that are gone are grey; whether
/// they are is looked at aside, because a folder's machine may be slow to answer.
class RecentFiles : public QObject {
    Q_OBJECT

public:
    explicit RecentFiles(QWidget* parent);
    ~RecentFiles() override;

    QMenu* getMenu() const { return menu; }

    void add(std::filesystem::path const& file);
    void remove(std::filesystem::path const& file);

signals:
    void chosen(std::filesystem::path const& file);

private:
    struct Check;

    void load();
    void save() const;
    void showFiles();
    void check();

    QMenu* menu;
    QStringList files; ///< newest first
    QStringList gone;
    std::shared_ptr<Check> checking;
    std::shared_ptr<void> alive = std::make_shared<int>(0);
};
