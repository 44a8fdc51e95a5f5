// A library that looks like a plugin by its name but exports no factory.
extern "C" int not_a_plugin_factory()
{
    return 42;
}
