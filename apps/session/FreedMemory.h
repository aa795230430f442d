#pragma once

/// Freed memory stays with the process, some tens of megabytes for each thread, rather than with
/// the system. The image libraries take and free megabytes for each block of pixels: to get them
/// from the system anew, page by page, takes several times as long as the block. Called once, first
/// in main.
void keepFreedMemory();
