// A trace that is on disk line by line, whatever becomes of the process.
#pragma once

#include <cstdio>
#include <fcntl.h>
#include <initializer_list>
#include <memory>
#include <unistd.h>

/// One thread writes. Without a file (the directory may be closed to us, or the
/// name taken by a pipe) lines are dropped. A new file is the user's alone.
class QD_Trace_File {
public:
    /// A file beyond this many bytes is emptied and begun again.
    static constexpr long LIMIT = 64L << 20;

    explicit QD_Trace_File(const char* path) :
        file_(
            fdopen(::open(path, O_WRONLY | O_CREAT | O_TRUNC | O_NONBLOCK | O_CLOEXEC, 0600), "w"),
            &close_file)
    {
    }

    /// The lines of a picture of the stream `id` begin.
    void start(int id, int line)
    {
        if (file_ && ftell(file_.get()) >= LIMIT && ftruncate(fileno(file_.get()), 0) == 0)
            rewind(file_.get());
        write("id: %d\n", id);
        write("%d\n", line);
    }

    void lines(std::initializer_list<int> numbers)
    {
        for (int number : numbers)
            write("%d\n", number);
    }

private:
    static void close_file(FILE* file)
    {
        if (file != nullptr)
            fclose(file);
    }
    void write(const char* format, int value)
    {
        if (!file_)
            return;
        fprintf(file_.get(), format, value);
        fflush(file_.get());
    }

    std::unique_ptr<FILE, void (*)(FILE*)> file_;
};
