#include "Deletion/StatusBanner.h"

#include "Controls/Spinner.h"
#include "Deletion/FailureList.h"
#include "Layout/Boxes.h"
#include "Text/NumberText.h"
#include "Theme/SymbolIcon.h"
#include "Theme/Theme.h"

#include <QLabel>
#include <QPushButton>

#include <chrono>

namespace tallyroom {

namespace {

constexpr std::chrono::milliseconds patience{250};

QString progressText(const RemovalProgress& progress)
{
    const QString work = progress.isStopping    ? QStringLiteral("Arrêt en cours…")
                         : progress.isRestoring ? QStringLiteral("Restauration en cours…")
                                                : QStringLiteral("Suppression en cours…");
    return QStringLiteral("%1 %2/%3")
        .arg(work, NumberText::grouped(progress.completed), NumberText::grouped(progress.total));
}

} // namespace

StatusBanner::StatusBanner(QWidget* parent)
    : QWidget(parent), m_symbol(new QLabel), m_spinner(new Spinner(Theme::iconSize)), m_text(new QLabel),
      m_details(new QPushButton(QStringLiteral("Détails…"))),
      m_undo(new QPushButton(QStringLiteral("Annuler la suppression"))),
      m_deleteTrashed(new QPushButton(QStringLiteral("Supprimer définitivement ces éléments"))),
      m_stop(new QPushButton(QStringLiteral("Arrêter"))), m_close(new QPushButton)
{
    m_text->setTextFormat(Qt::PlainText);
    m_text->setWordWrap(true);
    Theme::style(m_details, Theme::Button::plain);
    Theme::style(m_undo, Theme::Button::plain);
    Theme::style(m_deleteTrashed, Theme::Button::plain);
    Theme::style(m_stop, Theme::Button::plain);
    Theme::style(m_close, Theme::Button::quiet);
    m_close->setIcon(SymbolIcon::icon("xmark", Theme::Colour::secondary));
    m_close->setAccessibleName(QStringLiteral("Fermer le message"));
    m_close->setToolTip(m_close->accessibleName());
    auto* const row = new QHBoxLayout;
    row->setSpacing(Theme::gap);
    row->addWidget(m_symbol);
    row->addWidget(m_spinner);
    row->addWidget(m_text, 1);
    row->addWidget(m_details);
    row->addWidget(m_stop);
    row->addWidget(m_close);
    auto* const offers = new QHBoxLayout; // below: beside them a narrow window leaves no room for the text
    offers->setSpacing(Theme::gap);
    offers->addStretch();
    offers->addWidget(m_undo);
    offers->addWidget(m_deleteTrashed);
    auto* const column =
        makeColumn(this, {Theme::gap + Theme::gap / 2, Theme::gap, Theme::gap, Theme::gap}, Theme::gap / 2);
    column->addLayout(row);
    column->addLayout(offers);
    m_patience.setSingleShot(true);
    m_patience.setInterval(patience);
    connect(&m_patience, &QTimer::timeout, this, &StatusBanner::showContent);
    connect(m_details, &QPushButton::clicked, this, &StatusBanner::tellFailures);
    connect(m_undo, &QPushButton::clicked, this, &StatusBanner::undoRequested);
    connect(m_deleteTrashed, &QPushButton::clicked, this, &StatusBanner::finalDeletionRequested);
    connect(m_stop, &QPushButton::clicked, this, &StatusBanner::stopRequested);
    connect(m_close, &QPushButton::clicked, this, &StatusBanner::dismissed);
    connect(&Theme::shared(), &Theme::changed, this, &StatusBanner::showSymbol);
    showSymbol();
    showContent();
}

void StatusBanner::showMessage(const std::optional<QString>& message, ReportTone tone,
                               const std::vector<FileRemover::RemovalFailure>& failures, const QString& note)
{
    m_message = message;
    m_tone = tone;
    m_failures = failures;
    m_note = note;
    showSymbol();
    showContent();
}

void StatusBanner::showUndo(bool isOffered, bool isTold)
{
    m_isUndoOffered = isOffered;
    m_isTrashTold = isOffered && isTold;
    showContent();
}

void StatusBanner::showRemoval(const std::optional<RemovalProgress>& progress)
{
    if (progress && !m_progress) {
        m_patience.start();
    } else if (!progress) {
        m_patience.stop();
    }
    m_progress = progress;
    showContent();
}

void StatusBanner::showContent()
{
    const bool isWorking = m_progress && !m_patience.isActive();
    m_symbol->setVisible(!isWorking);
    m_spinner->setVisible(isWorking);
    m_details->setVisible((!m_failures.empty() || !m_note.isEmpty()) && !isWorking);
    m_undo->setVisible(m_isUndoOffered && !m_progress);
    m_deleteTrashed->setVisible(m_isTrashTold && !m_progress);
    m_stop->setVisible(isWorking);
    m_stop->setEnabled(isWorking && !m_progress->isStopping);
    m_close->setVisible(!isWorking);
    const QString trashed =
        m_isTrashTold ? QStringLiteral(" L’espace sera libéré quand la corbeille sera vidée.") : QString{};
    m_text->setText(isWorking ? progressText(*m_progress) : m_message.value_or(QString{}) + trashed);
    setAccessibleName(m_text->text());
    setVisible(isWorking || m_message.has_value());
    Q_EMIT contentChanged();
}

void StatusBanner::tellFailures()
{
    auto* const dialog = new FailureList(m_failures, m_note, this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->open();
}

void StatusBanner::showSymbol()
{
    const bool hasFailed = m_tone == ReportTone::failed;
    const QColor colour = Theme::shared().colour(hasFailed ? Theme::Colour::danger : Theme::Colour::done);
    Theme::style(this, hasFailed ? Theme::Surface::alert : Theme::Surface::banner);
    const char* const symbol = hasFailed ? "exclamationmark.triangle" : "checkmark.circle.fill";
    m_symbol->setPixmap(SymbolIcon::pixmap(symbol, colour, Theme::iconSize, devicePixelRatioF()));
    QPalette palette = m_text->palette();
    palette.setColor(QPalette::WindowText, colour);
    m_text->setPalette(palette);
}

} // namespace tallyroom
