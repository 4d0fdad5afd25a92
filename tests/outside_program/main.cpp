#include <iostream>
#include <memory>
#include <montaray/montaraystore.h>

int main(int, char** arguments)
{
    const std::unique_ptr<KIVScene> scene(KIVScene::inq_unsetup_scene());
    const bool is_saved = scene->save_to_file(arguments[1], true, true, false);
    std::cout << (is_saved ? "saved " : "not saved ") << scene->inq_current_file().c_str() << '\n';
    return is_saved ? 0 : 1;
}
