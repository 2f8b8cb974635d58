#pragma once

#include "Quillmere/Controls/PaletteLabel.h"

namespace quillmere {

/// A short complaint in red under a control, told to assistive programs when
/// it appears. Takes no room while there is nothing to say.
class MessageLabel : public PaletteLabel {
    Q_OBJECT
public:
    explicit MessageLabel(QWidget* parent = nullptr);

    /// Shows `message`, or nothing when it is empty.
    void setMessage(const QString& message);
};

}  // namespace quillmere
