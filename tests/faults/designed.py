"""What is not whole after a disturbance and yet meant to be so: a rule and its reason. A rule is looked
for in "verdict | label | detail"; the more exactly it says what it excuses, the better.
"""

import re

RULES = []


def reason_for(result):
    text = f"{result.verdict} | {result.label} | {result.detail}"
    for rule, reason in RULES:
        if re.search(rule, text):
            return reason
    return None
