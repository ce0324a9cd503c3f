"""Which box a machine can offer."""

from wardex_desk.box import Box, BoxError, Programs
from wardex_desk.container_box import ContainerBox
from wardex_desk.instance import Instance
from wardex_desk.namespace_box import NamespaceBox


def best_box(instance: Instance, programs: Programs) -> Box:
    """A box of private namespaces, or else the container that we are in.

    Raises BoxError with the reasons against both.
    """
    programs.check()
    try:
        return NamespaceBox(instance, programs)
    except BoxError as no_namespaces:
        try:
            return ContainerBox(instance, programs)
        except BoxError as no_container:
            raise BoxError(f"{no_namespaces}\nand no other box: {no_container}") from None
