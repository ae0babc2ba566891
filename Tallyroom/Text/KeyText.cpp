#include "Text/KeyText.h"

#include <QKeySequence>

#include <algorithm>
#include <array>
#include <utility>

namespace tallyroom::KeyText {

namespace {

/// Those that the toolkit calls by English words where its translation is not installed.
constexpr std::array frenchKeys{
    std::pair{Qt::Key_Left, "←"},
    std::pair{Qt::Key_Right, "→"},
    std::pair{Qt::Key_Up, "↑"},
    std::pair{Qt::Key_Down, "↓"},
    std::pair{Qt::Key_Return, "Entrée"},
    std::pair{Qt::Key_Enter, "Entrée"},
    std::pair{Qt::Key_Space, "Espace"},
    std::pair{Qt::Key_Backspace, "Retour arrière"},
    std::pair{Qt::Key_Delete, "Suppr"},
    std::pair{Qt::Key_Escape, "Échap"},
    std::pair{Qt::Key_Home, "Début"},
    std::pair{Qt::Key_End, "Fin"},
    std::pair{Qt::Key_PageUp, "Page préc"},
    std::pair{Qt::Key_PageDown, "Page suiv"},
};

QString nameOfOne(Qt::Key key)
{
    const auto* const french = std::ranges::find(frenchKeys, key, &std::pair<Qt::Key, const char*>::first);
    return french != frenchKeys.end() ? QString::fromUtf8(french->second)
                                      : QKeySequence{key}.toString(QKeySequence::PortableText);
}

} // namespace

QString name(QKeyCombination key)
{
    constexpr std::array held{std::pair{Qt::ControlModifier, "Ctrl+"}, std::pair{Qt::AltModifier, "Alt+"},
                              std::pair{Qt::ShiftModifier, "Maj+"}};
    QString text;
    for (const auto& [modifier, word] : held) {
        if (key.keyboardModifiers().testFlag(modifier)) {
            text += QString::fromUtf8(word);
        }
    }
    return text + nameOfOne(key.key());
}

} // namespace tallyroom::KeyText
