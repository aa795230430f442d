#pragma once

/// Processor cores that this process may use, at least 1: those of its affinity mask, and no more
/// than the processor time that its control group is granted.
int countUsableCores();
