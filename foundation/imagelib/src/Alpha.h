#pragma once

/// How a file's colours stand to its alpha. A pixmap's are premultiplied, whatever the file.
enum class Alpha { NONE, STRAIGHT, PREMULTIPLIED };
