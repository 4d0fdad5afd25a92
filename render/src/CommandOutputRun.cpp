#include "coversheet/lib/hdr/KIVCamera.h"
#include "curveslib/hdr/Fairing.h"
#include "imagelib/hdr/BitmapProvider.h"
#include "imagelib/hdr/CMSBitmapProvider.h"
#include "imagelib/hdr/ColourManager.h"
#include "imagelib/hdr/KIVPixmap.h"
#include "imagelib/hdr/KIVPixmapWriter.h"
#include "imagelib/hdr/PixOpFilter.h"
#include "imagelib/hdr/UnfinishedFile.h"
#include "kivlib/hdr/AbortPanel.h"
#include "kivlib/hdr/ConsoleOStream.h"
#include "kivlib/hdr/FileHandle.h"
#include "kivlib/hdr/entry_point.h"
#include "kivlib/hdr/file_operations.h"
#include "render/hdr/CommandOutput.h"
#include "render/hdr/OutputFileType.h"
#include "render/hdr/OutputRun.h"
#include "render/hdr/RenderScene.h"
#include "render/src/HeldFrame.h"
#include "scene/hdr/KIVScene.h"
#include "xsheet/column/hdr/XSheet.h"

#include <algorithm>
#include <climits>
#include <unistd.h>

namespace {
constexpr double LEAST_PIXEL_ASPECT = 0.001;
constexpr int FRAME_NUMBER_WIDTH = 4;
constexpr int ALL_MAY_USE_IT = 0777;
constexpr int EXISTS = 17;

/// Beyond all sizes, no memory holds the frame.
int rounded(double value)
{
    return static_cast<int>(std::lround(std::clamp<double>(value, INT_MIN, INT_MAX)));
}

/// False without memory.
bool add_alpha(KIVPixmap& field)
{
    return PixOpConvertType(4, field.inq_bits_per_sample(), true).transform(&field);
}

/// The half of the first frame that is shown later, with the in-betweens that this takes.
class SecondField {
public:
    explicit SecondField(XSheet* sheet) : sheet(sheet) { shift(true); }
    SecondField(const SecondField&) = delete;
    SecondField& operator=(const SecondField&) = delete;
    ~SecondField() { shift(false); }

private:
    void shift(bool by_half_a_frame)
    {
        Fairing::set_half_frame(by_half_a_frame);
        if (sheet)
            sheet->clear_all_inbetweens();
    }

    XSheet* sheet; // not owned
};

/// 1 stands between the full and the half sizes of each format.
int cineon_argument(const KIVString& format, int half)
{
    constexpr std::array<const char*, 4> formats{"academy", "cinemascope", "fullaperture",
                                                 "vistavision"};
    for (std::size_t i = 0; i < formats.size(); ++i)
        if (format == formats[i])
            return 2 * static_cast<int>(i) + half;
    return 0;
}

/// Television of 525 lines shows the lower field first; all else is seen from the top.
FieldOrder inq_field_order(int file_type)
{
    const bool has_525_lines = file_type == YUV_525_FILE || file_type == YIQ_525_FILE;
    return has_525_lines ? FieldOrder::LOWER_FIRST : FieldOrder::UPPER_FIRST;
}

int result_for_writer_error(int error)
{
    switch (error) {
    case 1:
        return 208;
    case 2:
    case 3:
    case 4:
    case 5:
    case 6:
    case 7:
        return 208 + error;
    case 216:
        return 216;
    default:
        return CommandOutput::SUCCESS; // the output carries on as though the frame were written
    }
}

int note_writer_error(int error, FrameReport& report)
{
    report.writer_error = error;
    return result_for_writer_error(error);
}
} // namespace

int CommandOutput::perform_output()
{
    OutputRun whole_range;
    return perform_output(whole_range);
}

int CommandOutput::perform_output(OutputRun& run)
{
    return without_exceptions<int>(NO_SCENE, [&] { return output_scene(run); });
}

int CommandOutput::output_scene(OutputRun& run)
{
    if (!set_up_colour())
        return NO_COLOUR_PROFILE;
    if (run.is_rehearsal() ? !check_output_dir() : !create_output_dir())
        return NO_OUTPUT;
    const KIVString folder = inq_absolute_path(settings.output_dir); // the load leaves the folder
    const std::unique_ptr<KIVScene> scene(
        KIVScene::load_from_file(settings.scene_file, nullptr, false));
    if (!scene) {
        *coutp << "Failed to load scene '" << settings.scene_file << "'.\n";
        return NO_SCENE;
    }
    if (!complete_range(scene->inq_scene_length(), run)) {
        if (!settings.silent)
            *coutp << "Invalid range - output aborted.\n";
        return BAD_RANGE;
    }
    complete_size(scene->inq_camera()->inq_aspect_ratio());
    if (!settings.silent)
        report_settings();
    settings.output_dir = folder;
    if (run.is_rehearsal() && settings.file_type == NO_FILE)
        return NO_OUTPUT;
    return output_frames(*scene, run);
}

bool CommandOutput::set_up_colour()
{
    ColourManager& manager = *inq_colour_manager();
    if (!(settings.colour_profile == "none")) {
        manager.set_output_profile_path(settings.colour_profile);
        if (manager.inq_has_error()) {
            *coutp << "Failed to initialise CMS: " << manager.inq_error_msg() << "\n";
            return false;
        }
        CMSBitmapProvider::install();
    }
    if (settings.gamma != 0.0F)
        manager.set_output_gamma(1.0 / static_cast<double>(settings.gamma));
    return true;
}

bool CommandOutput::has_output_dir() const
{
    if (settings.output_dir.is_null())
        *coutp << "No output directory specified.\n";
    return !settings.output_dir.is_null();
}

bool CommandOutput::create_output_dir()
{
    if (!has_output_dir())
        return false;
    const int result = makedir(settings.output_dir, ALL_MAY_USE_IT, false);
    if (result == 0 || result == EXISTS) {
        remove_abandoned_files(settings.output_dir);
        return true;
    }
    if (!settings.silent)
        *coutp << "Failed to create output directory: " << settings.output_dir << "\n";
    return false;
}

/// Whether files could be written to the folder, or it could be made.
bool CommandOutput::check_output_dir()
{
    if (!has_output_dir())
        return false;
    KIVString folder = inq_absolute_path(settings.output_dir);
    if (!inq_file_exists(folder))
        folder = folder.get_path();
    if (inq_is_directory(folder) && ::access(folder.c_str(), W_OK | X_OK) == 0)
        return true;
    if (!settings.silent)
        *coutp << "Failed to create output directory: " << settings.output_dir << "\n";
    return false;
}

bool CommandOutput::complete_range(int scene_length, OutputRun& run)
{
    if (settings.first_frame <= 0)
        settings.first_frame = 1;
    if (settings.last_frame <= 0)
        settings.last_frame = scene_length;
    return run.choose_range(scene_length, settings.first_frame, settings.last_frame);
}

void CommandOutput::complete_size(double camera_aspect)
{
    if (settings.pixel_aspect < LEAST_PIXEL_ASPECT)
        settings.pixel_aspect = 1.0;
    if (settings.width_given && !settings.height_given)
        settings.height = rounded(settings.width * settings.pixel_aspect / camera_aspect);
    else if (settings.height_given && !settings.width_given)
        settings.width = rounded(camera_aspect * settings.height / settings.pixel_aspect);
}

int CommandOutput::inq_bits_per_channel() const
{
    const bool is_deep = settings.file_type == TIFF_16_FILE || settings.file_type == PNG_16_FILE;
    return is_deep || settings.gamma > 0.0F ? 16 : 8;
}

void CommandOutput::report_settings()
{
    KIVOStream& out = *coutp;
    out << "Outputting from frame " << settings.first_frame << " to frame " << settings.last_frame
        << "\n";
    out << "Output type: "
        << "Rendered Frames\n";
    out << "Options: " << (settings.anti_alias ? "" : "Aliased.  ")
        << (settings.transparent ? "Transparent.  " : "") << "\n";
    if (settings.low_quality_ink_paint)
        out << "Lower quality Ink & Paint.\n";
    out << "Width: " << settings.width << ".  \n";
    out << "Height: " << settings.height << ".  \n";
    out << "Pixel aspect ratio: " << settings.pixel_aspect << ".  \n";
    out << "Color Profile: " << settings.colour_profile << "\n";
    if (settings.gamma > 0.0F)
        out << "Gamma: " << static_cast<double>(settings.gamma) << "\n";
    if (settings.tv_filter)
        report_tv_filter();
    if (settings.interlace)
        out << "TV interlace enabled (for smooth movement).\n";
    out << "Rendering with " << (inq_bits_per_channel() == 16 ? "16" : "8")
        << " bits per channel.\n";
    out << "Output directory: " << settings.output_dir << "\n";
    if (const OutputFileKind* kind = find_output_file_kind(settings.file_type))
        out << "File type: " << kind->report << "\n";
}

// The filter is switched off here and nowhere else, so a silent run keeps it.
void CommandOutput::report_tv_filter()
{
    switch (settings.file_type) {
    case YUV_625_FILE:
    case YUV_525_FILE:
    case YIQ_625_FILE:
    case YIQ_525_FILE:
        settings.tv_filter = false;
        *coutp << "-tv ignored - automatic for YUV or YIQ.\n";
        break;
    default:
        *coutp << "TV filter enabled (interlace flicker removal).\n";
    }
}

int CommandOutput::output_frames(KIVScene& scene, OutputRun& run)
{
    RenderScene renderer(&scene, settings.width, settings.height, settings.pixel_aspect,
                         settings.anti_alias ? 0 : 1, 0, inq_bits_per_channel(),
                         settings.low_quality_ink_paint ? 1 : 0);
    if (settings.transparent)
        renderer.set_background_colour(KIVColour(0.0, 0.0, 0.0, 0.0));
    HeldFrame held(scene, renderer, inq_bits_per_channel(), settings.interlace);
    leaves_unfinished = run.leaves_unfinished();
    run.begin();
    return run.render([&] {
        int result = SUCCESS;
        while (result == SUCCESS) {
            const int frame = run.next_frame([&held](int a, int b) { return held.is_same(a, b); });
            if (frame <= 0)
                break;
            const FrameReport report = output_frame(renderer, scene, run, held, frame);
            run.frame_ended(report);
            result = report.result;
        }
        return result;
    });
}

FrameReport CommandOutput::output_frame(RenderScene& renderer, KIVScene& scene, OutputRun& run,
                                        HeldFrame& held, int frame)
{
    const KIVString name = inq_frame_file(frame);
    const std::unique_ptr<KIVPixmapWriter> writer = make_writer(settings.file_type);
    FrameReport report;
    report.frame = frame;
    report.file = writer ? writer->inq_path(name) : name;
    if (!run.wants_frame(frame, report.file, [&] { return holds_frame(report.file); })) {
        report.outcome = FrameReport::LEFT_OUT;
    } else {
        if (!settings.silent)
            *coutp << "Rendering frame " << frame << "\n";
        held.will_render(frame);
        if (!copy_frame(held, report)) {
            renderer.set_camera_view();
            const auto pixmap = without_exceptions<std::unique_ptr<KIVPixmap>>(
                nullptr, [&] { return render(renderer, scene, run, frame); });
            if (pixmap)
                write_frame(name, pixmap.get(), report);
        }
        const bool has_file =
            report.outcome == FrameReport::WRITTEN || report.outcome == FrameReport::COPIED;
        if (has_file && !held.has_lost_images(frame))
            held.was_written(report);
    }
    if (run.looks_for_images())
        report.no_images = held.find_unreadable_images(frame);
    return report;
}

bool CommandOutput::holds_frame(const KIVString& file) const
{
    const std::unique_ptr<KIVPixmapWriter> writer = make_writer(settings.file_type);
    if (!writer)
        return false;
    const bool has_8_bits = find_output_file_kind(settings.file_type)->is_written_in_8_bits;
    return writer->has_finished(file,
                                {settings.width, settings.height, settings.transparent ? 4 : 3,
                                 has_8_bits ? 8 : inq_bits_per_channel()});
}

/// False if the frame has to be rendered after all.
bool CommandOutput::copy_frame(const HeldFrame& held, FrameReport& report)
{
    const FileHandle original = held.open_file_for(report.frame);
    const std::unique_ptr<KIVPixmapWriter> writer =
        original.is_open() ? make_writer(settings.file_type) : nullptr;
    if (!writer || !writer->write_copy(original, report.file))
        return false;
    report.outcome = FrameReport::COPIED;
    report.unfinished = writer->inq_unfinished();
    return true;
}

void CommandOutput::write_frame(const KIVString& name, KIVPixmap* pixmap, FrameReport& report)
{
    report.result = write_file(name, pixmap, settings.file_type, report);
    const bool is_written = report.result == SUCCESS && report.writer_error == 0;
    report.outcome = is_written ? FrameReport::WRITTEN : FrameReport::NOT_WRITTEN;
}

KIVString CommandOutput::inq_frame_file(int frame) const
{
    KIVString file = settings.output_dir;
    return file.append_path(KIVString(frame, FRAME_NUMBER_WIDTH));
}

KIVString CommandOutput::inq_frame_path(int frame) const
{
    const std::unique_ptr<KIVPixmapWriter> writer = make_writer(settings.file_type);
    return writer ? writer->inq_path(inq_frame_file(frame)) : KIVString();
}

std::unique_ptr<KIVPixmap> CommandOutput::render(RenderScene& renderer, KIVScene& scene,
                                                 OutputRun& run, int frame)
{
    std::unique_ptr<KIVPixmap> pixmap = render_field(renderer, run, frame);
    if (!pixmap || !settings.interlace)
        return pixmap;
    const SecondField later(scene.inq_xsheet());
    if (!settings.silent)
        *coutp << "Rendering interlace frame " << frame << ".5\n";
    const std::unique_ptr<KIVPixmap> second = render_field(renderer, run, frame);
    if (!second)
        return nullptr; // half a frame is none
    const bool are_alike = pixmap->inq_samples_per_pixel() == second->inq_samples_per_pixel() ||
                           (add_alpha(*pixmap) && add_alpha(*second));
    PixOpAddInterlace weave(second.get(), inq_field_order(settings.file_type));
    return are_alike && weave.transform(pixmap.get()) ? std::move(pixmap) : nullptr;
}

std::unique_ptr<KIVPixmap> CommandOutput::render_field(RenderScene& renderer, OutputRun& run,
                                                       int frame)
{
    std::unique_ptr<KIVPixmap> pixmap(renderer.render_frame(frame, run.inq_abort_panel()));
    if (!pixmap)
        return nullptr;
    if (settings.tv_filter && !PixOpInterlaceFilter().transform(pixmap.get()))
        return nullptr;
    inq_colour_manager()->add_gamma(pixmap.get());
    return pixmap;
}

/// Null for a type without a writer.
std::unique_ptr<KIVPixmapWriter> CommandOutput::make_writer(int file_type) const
{
    const OutputFileKind* kind = find_output_file_kind(file_type);
    const char* writer_class = kind && kind->writer_class ? kind->writer_class : "";
    const ClassDescriptor* descriptor = ClassManager::inq_main()->find_cd_for(writer_class);
    if (!descriptor)
        return nullptr;
    int argument = kind->writer_argument;
    if (file_type == CINEON_FULL_FILE || file_type == CINEON_HALF_FILE)
        argument = cineon_argument(settings.cineon_format, argument);
    std::unique_ptr<KIVPixmapWriter> writer(
        static_cast<const KIVPixmapWriterDescriptor*>(descriptor)->new_writer(argument));
    if (writer && leaves_unfinished)
        writer->leave_unfinished();
    return writer;
}

int CommandOutput::write_file(const KIVString& name, KIVPixmap* pixmap, int file_type)
{
    FrameReport report;
    const int result = write_file(name, pixmap, file_type, report);
    if (result != SUCCESS || report.unfinished.is_null())
        return result;
    finish_file(report);
    return report.result;
}

int CommandOutput::write_file(const KIVString& name, KIVPixmap* pixmap, int file_type,
                              FrameReport& report)
{
    return without_exceptions<int>(result_for_writer_error(KIVPixmapWriter::WRITE_NO_MEMORY), [&] {
        return try_to_write_file(name, pixmap, file_type, report);
    });
}

int CommandOutput::try_to_write_file(const KIVString& name, KIVPixmap* pixmap, int file_type,
                                     FrameReport& report)
{
    if (file_type == NO_FILE)
        return NO_OUTPUT;
    const OutputFileKind* kind = find_output_file_kind(file_type);
    if (!kind)
        *coutp << "Unsupported file format, cannot write file\n";
    else if (kind->is_written_in_8_bits &&
             !PixOpConvertType(pixmap->inq_samples_per_pixel(), 8, true).transform(pixmap))
        return note_writer_error(KIVPixmapWriter::WRITE_NO_MEMORY, report);

    const KIVString writer_class = kind ? kind->writer_class : "";
    if (!ClassManager::inq_main()->find_cd_for(writer_class.c_str())) {
        *coutp << "Can not write file '" << name << "', since failed to find image writer class '"
               << writer_class << "'\n";
        return NO_WRITER;
    }
    const std::unique_ptr<KIVPixmapWriter> writer = make_writer(file_type);
    if (!writer)
        return SUCCESS;
    writer->write_pixmap(name, pixmap);
    report.file = writer->inq_path(name);
    report.unfinished = writer->inq_unfinished();
    return note_writer_error(writer->inq_error(), report);
}

void CommandOutput::finish_file(FrameReport& report)
{
    if (report.unfinished.is_null())
        return;
    report.writer_error =
        KIVPixmapWriter::finish(std::exchange(report.unfinished, {}), report.file);
    report.result = result_for_writer_error(report.writer_error);
    if (report.writer_error != KIVPixmapWriter::WRITE_OKAY)
        report.outcome = FrameReport::NOT_WRITTEN;
}
