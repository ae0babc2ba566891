#include "Properties/PropertiesDialog.h"

#include "Bridge/AskApart.h"
#include "Controls/Spinner.h"
#include "Deletion/ReclaimLine.h"
#include "Layout/Boxes.h"
#include "Text/AgeText.h"
#include "Text/FileUrlText.h"
#include "Text/NumberText.h"
#include "Text/PlainText.h"
#include "Text/SizeText.h"
#include "Text/UnreadText.h"
#include "Theme/FileKindPresentation.h"
#include "Theme/SymbolIcon.h"
#include "Theme/Theme.h"

#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include <algorithm>
#include <utility>

namespace tallyroom {

namespace {

QString typeText(const Entry& entry)
{
    if (entry.isDirectory) {
        return QStringLiteral("Dossier");
    }
    const bool isOrdinary = entry.form == EntryForm::ordinary;
    return (isOrdinary ? QStringLiteral("Fichier · ") : QString{}) + kindName(entry);
}

/// The folder that all of `entries` lie in directly; none when they lie in several.
std::optional<FileUrl> commonFolder(const std::vector<Entry>& entries)
{
    const FileUrl folder = entries.front().url.parent();
    const bool isCommon =
        std::ranges::all_of(entries, [&](const Entry& entry) { return entry.url.parent() == folder; });
    return isCommon ? std::optional{folder} : std::nullopt;
}

QString leastText(bool isLeast)
{
    return isLeast ? QStringLiteral("au moins ") : QString{};
}

QString bytesText(std::int64_t bytes, bool isLeast)
{
    return leastText(isLeast) +
           QStringLiteral("%1 (%2)").arg(sizeText(bytes), NumberText::plural(bytes, QStringLiteral("octet")));
}

} // namespace

PropertiesDialog::PropertiesDialog(std::vector<Entry> entries, QWidget* parent)
    : TellingDialog(QStringLiteral("Propriétés"), parent), m_entries(std::move(entries)),
      m_lines(new QFormLayout), m_spinner(new Spinner(Theme::smallIconSize)), m_unread(new QLabel)
{
    m_lines->setLabelAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    m_lines->setHorizontalSpacing(Theme::margin);
    m_lines->setVerticalSpacing(Theme::gap / 2);
    m_lines->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    addIdentity();
    addFigures();
    addFacts();
    Theme::style(m_unread, Theme::Text::secondary);
    m_unread->hide();
    auto* const reclaim = new ReclaimLine(m_entries);
    reclaim->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    foot().insertWidget(0, m_spinner);
    foot().insertWidget(1, m_unread, 1);
    column().setSpacing(Theme::gap * 2);
    column().addLayout(m_lines);
    column().addWidget(reclaim);
    column().addStretch(1);
    addFoot();
    closeButton().setFocus(); // the first line would look like a field to fill in
    askFacts();
    count();
}

void PropertiesDialog::open(std::vector<Entry> entries, QWidget* parent)
{
    auto* const dialog = new PropertiesDialog(std::move(entries), parent);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    static_cast<QDialog*>(dialog)->open();
}

QLineEdit* PropertiesDialog::addLine(const QString& name, const QString& text)
{
    auto* const label = new QLabel(name);
    Theme::style(label, Theme::Text::secondary);
    auto* const line = new QLineEdit(text);
    line->setReadOnly(true);
    line->setAccessibleName(name);
    line->setCursorPosition(0);
    label->setBuddy(line);
    label->setMinimumHeight(line->sizeHint().height());
    m_lines->addRow(label, line);
    return line;
}

void PropertiesDialog::addIdentity()
{
    const Entry& first = m_entries.front();
    const bool isOne = m_entries.size() == 1;
    addLine(QStringLiteral("Nom"), isOne ? FileUrlText::display(first.name)
                                         : NumberText::plural(m_entries.size(), QStringLiteral("élément")));
    const auto folder = commonFolder(m_entries);
    addLine(QStringLiteral("Emplacement"),
            folder ? FileUrlText::displayFromHome(*folder) : QStringLiteral("plusieurs dossiers"));
    if (isOne) {
        addLine(QStringLiteral("Type"), typeText(first));
    }
}

void PropertiesDialog::addFigures()
{
    m_onDisk = addLine(QStringLiteral("Taille sur le disque"), {});
    m_logical = addLine(QStringLiteral("Taille du contenu"), {});
    if (m_entries.size() > 1 || m_entries.front().isDirectory) {
        m_content = addLine(QStringLiteral("Contenu"), {});
    }
}

/// The file system's own answers make sense for one item only.
void PropertiesDialog::addFacts()
{
    const Entry& first = m_entries.front();
    if (m_entries.size() > 1) {
        return;
    }
    QStringList names;
    if (first.form == EntryForm::link) {
        names += QStringLiteral("Mène à");
    } else if (!first.isDirectory && first.form == EntryForm::ordinary) {
        names += QStringLiteral("Liens physiques");
    }
    names += {QStringLiteral("Propriétaire"), QStringLiteral("Groupe"),        QStringLiteral("Permissions"),
              QStringLiteral("Modifié"),      QStringLiteral("Dernier accès"), QStringLiteral("Créé")};
    for (const QString& name : names) {
        m_facts.push_back(addLine(name, {}));
    }
}

void PropertiesDialog::setFact(const QString& name, const QString& text)
{
    const auto line = std::ranges::find(m_facts, name, &QLineEdit::accessibleName);
    if (line == m_facts.end()) {
        addLine(name, text);
        return;
    }
    (*line)->setText(text);
    (*line)->setCursorPosition(0);
}

void PropertiesDialog::askFacts()
{
    if (m_entries.size() == 1) {
        askApart<Facts>(
            this, [url = m_entries.front().url] { return itemFacts(url); },
            [this](const Facts& facts) { showFacts(facts); });
    }
}

void PropertiesDialog::showFacts(const Facts& facts)
{
    if (!facts) {
        for (QLineEdit* const line : m_facts) {
            m_lines->removeRow(line);
        }
        m_facts.clear();
        addLine(QStringLiteral("État"), toSentence(facts.error().message()));
        return;
    }
    if (facts->type == EntryType::link) {
        setFact(QStringLiteral("Mène à"), FileUrlText::display(facts->linkTarget));
    }
    if (facts->type == EntryType::file) {
        setFact(QStringLiteral("Liens physiques"),
                facts->names == 1 ? QStringLiteral("aucun autre nom")
                                  : NumberText::plural(facts->names, QStringLiteral("nom")) +
                                        QStringLiteral(" pour ce fichier"));
    }
    setFact(QStringLiteral("Propriétaire"), FileUrlText::display(facts->owner));
    setFact(QStringLiteral("Groupe"), FileUrlText::display(facts->group));
    setFact(QStringLiteral("Permissions"),
            QStringLiteral("%1 (%2)").arg(QString::fromStdString(permissionLetters(facts->permissions)),
                                          QString::number(facts->permissions, 8).rightJustified(3, u'0')));
    setFact(QStringLiteral("Modifié"), dateText(facts->modifiedAt));
    setFact(QStringLiteral("Dernier accès"), dateText(facts->accessedAt));
    setFact(QStringLiteral("Créé"), dateText(facts->createdAt));
}

void PropertiesDialog::count()
{
    m_pump = std::make_unique<StreamPump<ContentFigures>>(
        countContent(m_entries), [this](const ContentFigures& figures) { showFigures(figures); },
        [this] { endCount(); });
}

void PropertiesDialog::showFigures(const ContentFigures& figures)
{
    const bool isLeast = figures.unread > 0;
    m_onDisk->setText(bytesText(figures.allocatedBytes, isLeast));
    m_logical->setText(bytesText(figures.logicalBytes, isLeast));
    if (m_content != nullptr) {
        QString text = leastText(isLeast) + NumberText::files(figures.files) + QStringLiteral(", ") +
                       NumberText::plural(figures.folders, QStringLiteral("dossier"));
        if (figures.linkedNames > 0) {
            text += QStringLiteral(", dont %1 avec d’autres noms (liens physiques)")
                        .arg(NumberText::files(figures.linkedNames));
        }
        m_content->setText(text);
    }
    m_unread->setVisible(isLeast);
    m_unread->setText(UnreadText::count(figures.unread, figures.hasUnreadItems));
}

void PropertiesDialog::endCount()
{
    m_spinner->hide();
    Q_EMIT counted();
}

QSize PropertiesDialog::sizeHint() const
{
    return {Theme::failureListWidth, QDialog::sizeHint().height()};
}

} // namespace tallyroom
