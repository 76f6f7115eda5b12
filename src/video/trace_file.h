// A trace that is on disk line by line, whatever becomes of the process.
#pragma once

#include <cstdio>
#include <memory>

/// One thread writes. Without a file (the directory may be closed to us) lines are dropped.
class QD_Trace_File {
public:
    explicit QD_Trace_File(const char* path) : file_(fopen(path, "we"), &close_file) {}

    void line(int number) { write("%d\n", number); }
    void id_line(int id) { write("id: %d\n", id); }

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
