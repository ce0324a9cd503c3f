"""Every verb of the operator's command, in words and for programs, in each situation of a device."""

import pytest
import situations
from console import steady


@pytest.mark.parametrize("name", sorted(situations.ALL))
def test_every_verb_says_what_is_so(put_on_desk, name):
    situation = situations.ALL[name]
    seen = steady(situation.console(put_on_desk(without=["supervisor"], **situation.plan)))
    assert seen.splitlines() == situations.expected(name).read_text().splitlines()
