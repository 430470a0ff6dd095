#pragma once

class QGroupBox;

/// Gives a group box of figures its look: a round grey frame with the title in it.
void styleStatisticsBox(QGroupBox* box);
