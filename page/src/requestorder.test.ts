import { expect, test } from 'vitest';
import { RequestOrder } from './requestorder';

test.each<[string, ['busy' | 'answer', number][], boolean[]]>([
    [
        'answers the announced request',
        [
            ['busy', 1],
            ['answer', 1],
        ],
        [true],
    ],
    [
        'drops the answer to a request that another has overtaken',
        [
            ['busy', 1],
            ['busy', 2],
            ['answer', 1],
            ['answer', 2],
        ],
        [false, true],
    ],
    [
        'takes a cancellation and drops the result that comes after it',
        [
            ['busy', 4],
            ['answer', 5],
            ['answer', 4],
        ],
        [true, false],
    ],
    ['takes an answer without announcement', [['answer', 3]], [true]],
    [
        'takes a second answer to the same request',
        [
            ['busy', 2],
            ['answer', 2],
            ['answer', 2],
        ],
        [true, true],
    ],
])('%s', (_, steps, accepted) => {
    const order = new RequestOrder(),
        answers: boolean[] = [];
    for (const [type, id] of steps) {
        if (type === 'busy') order.begin(id);
        else answers.push(order.accepts(id));
    }
    expect(answers).toEqual(accepted);
});
