#pragma once

#include <QObject>
#include <QVariantList>
#include <QVariantMap>

#include <vector>

/// The lines in which a view lists the modules of a file: for each module a heading, its fields, and one
/// field per row. A line is made only when it is asked for, so a list without end costs little.
class ModuleLines : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QVariantList modules READ modules WRITE setModules NOTIFY modulesChanged FINAL)
    Q_PROPERTY(int moduleCount READ moduleCount NOTIFY modulesChanged FINAL)
    Q_PROPERTY(int count READ count NOTIFY modulesChanged FINAL)

public:
    using QObject::QObject;

    QVariantList modules() const { return m_modules; }
    /// Module entries as FileTools::makeModuleEntry builds them.
    void setModules(const QVariantList &modules);
    int moduleCount() const { return static_cast<int>(m_modules.size()); }
    /// Of lines.
    int count() const { return m_count; }
    /// "title" and "value" of the line, and a true "heading" where a module begins; empty for a number that
    /// no line has.
    Q_INVOKABLE QVariantMap line(int number) const;

signals:
    void modulesChanged();

private:
    QVariantList m_modules;
    /// The number of each module's first line.
    std::vector<int> m_starts;
    int m_count = 0;
};
